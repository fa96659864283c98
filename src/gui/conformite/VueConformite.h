// The compliance view, the "Conformité" sub-tab of the main window's "Musique" tab: a month and a
// regime, the button "Juger", and on one screen the verdict, its criteria with their margins, the
// titles the ten-title rule cut, the French-language plays a month in progress still needs, the
// source of the counts, and the chart of the daily band shares against the threshold with the
// month's running share (Qt Charts where the build has it; otherwise the printed chart's own
// drawing, see GraphiqueDessine). "PDF..." prints the verdict with the same chart. The regime
// offered is the station's own (RegimeStation); the regime judged becomes the station's.
#pragma once

#include <QWidget>

#include <functional>
#include <optional>

#include "Conformite.h"
#include "GraphiqueConformite.h"

#if ZL3_QT_CHARTS
class QChartView;
#endif
class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace zl3::gui {

#if ZL3_QT_CHARTS
using VueGraphique = QChartView;
#else
// The chart drawn from the print layout's primitives (DessineGraphiqueConformite), for builds
// without Qt Charts (the Windows build from Debian's sources has no Qt Charts).
class GraphiqueDessine : public QWidget {
  public:
    explicit GraphiqueDessine(QWidget* parent = nullptr);
    void Montrer(SerieConformite serie);

  protected:
    void paintEvent(QPaintEvent* e) override;

  private:
    std::optional<SerieConformite> serie_;
};
using VueGraphique = GraphiqueDessine;
#endif

class VueConformite : public QWidget {
    Q_OBJECT
  public:
    explicit VueConformite(QWidget* parent = nullptr);

    // The station, caller slot and base's identification, from the main window; false means
    // nothing can be judged now (the main window has said why).
    std::function<bool(ParametresConformite&)> parametres;
    // Where "PDF..." writes: the file chosen for a default name; "" cancels.
    std::function<std::string(const std::string& nomParDefaut)> dialoguePdf;

    // The months offered: the current one and the 24 before it, last month chosen.
    void RemplirMois(const DateTime& maintenant);
    void ChoisirMois(int annee, int mois);
    void ChoisirRegime(Regime r);

    // The "Juger" button: judges the chosen month under the chosen regime and shows it.
    void Juger();
    // The "PDF..." button.
    void ImprimerPdf();

    const std::optional<VerdictConformite>& Verdict() const { return verdict_; }
    VueGraphique* Graphique() const { return graphique_; }

  private:
    void Afficher();

    QComboBox* mois_ = nullptr;
    QComboBox* regime_ = nullptr;
    QPushButton* juger_ = nullptr;
    QPushButton* pdf_ = nullptr;
    QLabel* verdictTexte_ = nullptr;
    QLabel* resume_ = nullptr;
    QLabel* restants_ = nullptr;
    QLabel* source_ = nullptr;
    QTableWidget* criteres_ = nullptr;
    QTableWidget* dixTitres_ = nullptr;
    VueGraphique* graphique_ = nullptr;
    std::optional<VerdictConformite> verdict_;
    bool regimeChoisi_ = false;  // the user picked a regime since the last judgement
};

}  // namespace zl3::gui
