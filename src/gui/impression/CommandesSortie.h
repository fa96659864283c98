// The main window's output commands: "Exporter..." (MnuExportExcel: the current report to a
// spreadsheet or XML file), "Imprimer..." (MnuPrint: a print preview of the core's print layout,
// printed or saved as PDF from there), the history export of the current grid (FrmExport) and
// the play counts over the period (FrmStatsPassages). Created by the main window once its menus
// exist: it enables the two actions, adds the two menu entries and connects them.
//
// The dialogs that wait for the user are seams: `dialogue` (the save dialog, Qt's by default)
// and `apercu` (shows the print preview; exec() by default). Tests replace them.
#pragma once

#include <QObject>

#include <functional>
#include <optional>

#include "Lib_Export.h"
#include "MiseEnPage.h"

class QPrinter;
class QPrintPreviewDialog;

namespace zl3::gui {

class Frm_Main;
class FrmExport;
class FrmStatsPassages;

// Paints the pages of `impression` on `printer` (pages in points from the top-left corner of the
// sheet, scaled to the printer's resolution), one printer page each. The printer's orientation
// must be the layout's (ParametrerImprimante).
void PeindreImpression(QPrinter& printer, const Impression& impression);
// A4, the layout's orientation, no margin of the printer's own (the layout has its margins),
// the job name.
void ParametrerImprimante(QPrinter& printer, const Impression& impression);

class CommandesSortie : public QObject {
    Q_OBJECT
  public:
    explicit CommandesSortie(Frm_Main& main);
    ~CommandesSortie() override;

    ResultatExport MnuExportExcel_Click();
    void MnuPrint_Click();
    // The print layout of the current grid (nullopt when the main window shows no grid).
    std::optional<Impression> MiseEnPageCourante() const;
    FrmExport* MnuExportHistorique_Click();
    FrmStatsPassages* MnuStatsPassages_Click();

    FrmExport* Export() const { return export_; }
    FrmStatsPassages* StatsPassages() const { return passages_; }

    DialogueEnregistrer dialogue;
    std::function<void(QPrintPreviewDialog&)> apercu;

  private:
    Frm_Main& main_;
    FrmExport* export_ = nullptr;
    FrmStatsPassages* passages_ = nullptr;
};

}  // namespace zl3::gui
