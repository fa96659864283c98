// FrmColorPicker: the colour chooser of the options window. The 50 colours of the default
// palette (DefaultColor) as buttons, "Palette_0" … "Palette_49", and a custom colour made of its
// red, green and blue parts ("TexteRouge", "TexteVert", "TexteBleu"). Clicking a palette colour
// chooses it at once; "OK" takes the custom colour, "Annuler" keeps the old one.
//
// Colours are the settings' integers, red in the low byte (Lib_Look.h).
#pragma once

#include <QColor>
#include <QDialog>

#include <cstdint>
#include <optional>

class QFrame;
class QSpinBox;

namespace zl3::gui {

class FrmColorPicker : public QDialog {
    Q_OBJECT
  public:
    explicit FrmColorPicker(int32_t initiale, QWidget* parent = nullptr);
    // The colour in the custom boxes (a palette click puts its colour there first).
    int32_t Couleur() const;
    void DefinirCouleur(int32_t couleur);

    // Opens the chooser modally; nothing when cancelled.
    static std::optional<int32_t> Choisir(QWidget* parent, int32_t initiale);

  private:
    void MajApercu();
    QSpinBox* rouge_ = nullptr;
    QSpinBox* vert_ = nullptr;
    QSpinBox* bleu_ = nullptr;
    QFrame* apercu_ = nullptr;
};

// A colour of the settings as Qt's, and back.
QColor VersQColor(int32_t couleur);
int32_t DeQColor(const QColor& c);

}  // namespace zl3::gui
