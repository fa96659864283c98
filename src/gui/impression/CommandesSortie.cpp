#include "CommandesSortie.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPrintPreviewDialog>
#include <QPrinter>

#include "Etat.h"
#include "FrmExport.h"
#include "FrmStatsPassages.h"
#include "Frm_Main.h"
#include "Lib_Config.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Settings.h"
#include "PeintrePrimitives.h"
#include "Services.h"

namespace zl3::gui {
namespace {

// Export folder and format of the settings: XML goes to its own folder.
ReglagesExport LitReglagesExport() {
    const SettingsExport s = InitSettingsExport();
    ReglagesExport r;
    r.format = s.format;
    r.apresExport = s.apresExport;
    r.dossier = DossierNatif(FormatDeReglage(s.format) == FormatExport::Xml ? s.dossierXML
                                                                            : s.dossierExport);
    return r;
}

// The two identification texts of the chosen station: its base's radio name and its own label.
std::pair<std::string, std::string> Identification(int base, int station) {
    const Configuration& c = Config();
    if (base < 1 || base > static_cast<int>(c.bases.size())) return {c.nomRadio, ""};
    const ConfigBase& b = c.bases[static_cast<size_t>(base - 1)];
    const std::string st = station >= 1 && station <= static_cast<int>(b.stations.size())
                               ? b.stations[static_cast<size_t>(station - 1)].lib
                               : std::string();
    return {b.lib, st};
}

}  // namespace

void ParametrerImprimante(QPrinter& printer, const Impression& impression) {
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setPageOrientation(impression.paysage ? QPageLayout::Landscape : QPageLayout::Portrait);
    printer.setFullPage(true);
    printer.setPageMargins(QMarginsF(0, 0, 0, 0), QPageLayout::Point);
    printer.setDocName(QString::fromStdString(impression.nomTravail));
}

void PeindreImpression(QPrinter& printer, const Impression& impression) {
    QPainter p;
    if (!p.begin(&printer)) {
        TraceLog("Print: the printer cannot be painted on");
        return;
    }
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    bool premiere = true;
    for (const PageImprimee& page : impression.pages) {
        if (!premiere) printer.newPage();
        premiere = false;
        // Points to the printer's pixels, from the sheet as the printer reports it.
        const QRectF feuille = printer.paperRect(QPrinter::DevicePixel);
        const double k = page.largeur > 0 ? feuille.width() / page.largeur : 1.0;
        PeindrePrimitives(p, page.primitives, k, &printer);
    }
    p.end();
}

CommandesSortie::CommandesSortie(Frm_Main& main) : QObject(&main), main_(main) {
    setObjectName("CommandesSortie");
    dialogue = DialogueEnregistrerQt(&main);
    apercu = [](QPrintPreviewDialog& d) { d.exec(); };
    for (const char* nom : {"MnuExportExcel", "MnuPrint"}) {
        QAction* a = main.Action(nom);
        if (!a) continue;
        a->setEnabled(true);
        a->setToolTip(QString());
        if (QString(nom) == "MnuExportExcel")
            connect(a, &QAction::triggered, this, [this] { MnuExportExcel_Click(); });
        else
            connect(a, &QAction::triggered, this, [this] { MnuPrint_Click(); });
    }
    // The history export and the play counts, in the file menu before its separator.
    QMenu* fichier = nullptr;
    for (QMenu* m : main.menuBar()->findChildren<QMenu*>())
        if (m->actions().contains(main.Action("MnuPrint"))) fichier = m;
    if (fichier) {
        const QList<QAction*> actions = fichier->actions();
        const int i = static_cast<int>(actions.indexOf(main.Action("MnuPrint")));
        QAction* avant = i >= 0 && i + 1 < actions.size() ? actions[i + 1] : nullptr;
        auto ajoute = [&](const char* nom, const QString& texte) {
            auto* a = new QAction(texte, fichier);
            a->setObjectName(nom);
            fichier->insertAction(avant, a);
            return a;
        };
        connect(ajoute("MnuExportHistorique", QStringLiteral("Export de l'&historique...")),
                &QAction::triggered, this, [this] { MnuExportHistorique_Click(); });
        connect(ajoute("MnuStatsPassages", QStringLiteral("Nombre de &passages...")),
                &QAction::triggered, this, [this] { MnuStatsPassages_Click(); });
    }
}

CommandesSortie::~CommandesSortie() = default;

ResultatExport CommandesSortie::MnuExportExcel_Click() {
    TraceProc("Frm_Main:MnuExportExcel_Click");
    const auto rapport = main_.RapportCourant();
    const Grid* grille = main_.GrilleCourante();
    if (!rapport || !grille) return {};
    const DateTime debut = main_.DebutPeriode();
    const DateTime fin = main_.FinPeriode();
    return ExporteRapport(*grille, *rapport, std::to_string(main_.StationChoisie().second), debut,
                          fin, LitReglagesExport(), dialogue);
}

std::optional<Impression> CommandesSortie::MiseEnPageCourante() const {
    const Grid* grille = main_.GrilleCourante();
    if (!grille) return std::nullopt;
    const auto [base, station] = main_.StationChoisie();
    const auto [id1, id2] = Identification(base, station);
    return MetEnPageRapport(*grille, main_.RapportCourant(), main_.DebutPeriode(),
                            main_.FinPeriode(), id1, id2, Svc().clock->Now());
}

void CommandesSortie::MnuPrint_Click() {
    const std::string id = "Frm_Main:MnuPrint_Click";
    TraceProc(id);
    try {
        const auto impression = MiseEnPageCourante();
        if (!impression) return;
        QPrinter printer(QPrinter::HighResolution);
        ParametrerImprimante(printer, *impression);
        QPrintPreviewDialog dialogue(&printer, &main_);
        dialogue.setObjectName("ApercuImpression");
        dialogue.setWindowTitle(QString::fromStdString(impression->nomTravail));
        dialogue.resize(1000, 760);
        connect(&dialogue, &QPrintPreviewDialog::paintRequested, &dialogue,
                [this, &impression](QPrinter* p) {
                    main_.Statut(impression->texteEnCours, false);
                    PeindreImpression(*p, *impression);
                    main_.Statut("", false);
                });
        apercu(dialogue);
    } catch (const std::exception& e) {
        TraceErreur(id, 0, e.what());
    }
}

FrmExport* CommandesSortie::MnuExportHistorique_Click() {
    const std::string id = "Frm_Main:MnuExportHistorique_Click";
    TraceProc(id);
    const Grid* grille = main_.GrilleCourante();
    if (!grille) return nullptr;
    if (!export_) export_ = new FrmExport(&main_);
    export_->setWindowFlag(Qt::Window);
    const ReglagesExport r = LitReglagesExport();
    const FormatExport format = FormatDeReglage(r.format);
    export_->SetTexteNature(format == FormatExport::Xml    ? "XML"
                            : format == FormatExport::Xlsx ? "XLSX"
                                                           : "XLS");
    export_->DefinirApresExport(r.apresExport);
    if (const auto rapport = main_.RapportCourant()) {
        std::string nom = NomFichierExport(*rapport, std::to_string(main_.StationChoisie().second),
                                           main_.DebutPeriode(), main_.FinPeriode(), format);
        export_->DefinirCheminParDefaut(r.dossier + nom);
    }
    export_->TransfertDataHistorique(*grille);
    export_->show();
    export_->raise();
    return export_;
}

FrmStatsPassages* CommandesSortie::MnuStatsPassages_Click() {
    TraceProc("Frm_Main:MnuStatsPassages_Click");
    const auto [base, station] = main_.StationChoisie();
    if (base < 1 || station < 1) {
        AffMsg("Veuillez choisir une station.", kTitreApplication, kMbOk | kMbExclamation);
        return nullptr;
    }
    if (Etat().rechercheEnCours) return nullptr;
    if (!passages_) passages_ = new FrmStatsPassages(&main_);
    passages_->show();
    passages_->raise();
    passages_->Remplir(base, station, main_.DebutPeriode(), main_.FinPeriode());
    return passages_;
}

}  // namespace zl3::gui
