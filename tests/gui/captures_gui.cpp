// Screenshots of every window of the tool into a folder, on a demo site, for a look by eye:
//   xvfb-run -a build/tests/gui/captures_gui ROOT OUT_DIR
// ROOT is a demo site (zl3-demo); the Quotas, Top Diffusion, SACEM and advertising reports of the
// last full month of station 1 are run first.
#include <QApplication>
#include <QDateEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTabBar>
#include <QTabWidget>

#include <cstdio>

#include "CommandesSortie.h"
#include "Etat.h"
#include "FrmExport.h"
#include "FrmStatsPassages.h"
#include "FrmDebugEcran.h"
#include "FrmColorPicker.h"
#include "FenetresAide.h"
#include "FrmDebugEcran.h"
#include "FrmListeRechercheMulti.h"
#include <QPushButton>
#include "FrmMsgBox.h"
#include "FrmSetup.h"
#include "Frm_Main.h"
#include "ServicesQt.h"
#include "Services.h"
#include "Lib_Systeme.h"

namespace {

class Silencieux : public zl3::MessageBoxUi {
  public:
    int Show(const zl3::MessageRequest& r) override { return zl3::CloseButtonAnswer(r.style); }
};

void Capturer(QWidget& w, const QString& fichier) {
    QCoreApplication::processEvents();
    if (!w.grab().save(fichier)) std::fprintf(stderr, "cannot write %s\n", qPrintable(fichier));
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: captures_gui ROOT OUT_DIR\n");
        return 2;
    }
    zl3::sys::SetZelvarRoot(argv[1]);
    const QString out = QString::fromLocal8Bit(argv[2]) + "/";
    zl3::SystemClock horloge;
    zl3::SystemShell shell;
    Silencieux boites;
    zl3::gui::EventLoopQt evenements;
    zl3::ScopedServices services(zl3::Services{&boites, &horloge, &evenements, &shell});
    zl3::gui::Frm_Main w;
    evenements.avantEvenements = [&w] { w.SuivreGrillesDeTempsEnTemps(); };
    if (!w.Form_Initialize() || !w.Form_Load()) return 1;
    w.resize(1280, 720);
    w.show();
    const QDate fin = QDate::currentDate().addDays(-QDate::currentDate().day());
    const zl3::DateTime f{fin.year(), fin.month(), fin.day()};
    w.DefinirPeriode(zl3::DateTime{fin.year(), fin.month(), 1}, f);
    w.ChoisirStation(1, 1);
    Capturer(w, out + "frm_main_start.png");
    const struct {
        zl3::Rapport r;
        const char* nom;
    } rapports[] = {{zl3::Rapport::Quotas, "quotas"},
                    {zl3::Rapport::TopDiffusion, "top"},
                    {zl3::Rapport::Sacem, "sacem"},
                    {zl3::Rapport::Publicite, "publicite"}};
    for (const auto& r : rapports) {
        w.ChoisirRapport(r.r);
        w.CommandLancer_Click();
        Capturer(w, out + "frm_main_" + r.nom + ".png");
    }
    // The output commands on the Quotas report: the print preview (and the same pages as a PDF,
    // for pdftoppm), the history export and the play counts.
    w.ChoisirRapport(zl3::Rapport::Quotas);
    zl3::gui::CommandesSortie& sortie = *w.Sortie();
    sortie.apercu = [&](QPrintPreviewDialog& d) {
        d.show();
        Capturer(d, out + "apercu_impression.png");
        QPrinter* p = d.printer();
        p->setOutputFormat(QPrinter::PdfFormat);
        p->setOutputFileName(out + "impression_quotas.pdf");
        emit d.paintRequested(p);
    };
    sortie.MnuPrint_Click();
    if (zl3::gui::FrmExport* e = sortie.MnuExportHistorique_Click()) {
        e->resize(900, 500);
        Capturer(*e, out + "frm_export.png");
        e->close();
    }
    if (zl3::gui::FrmStatsPassages* f = sortie.MnuStatsPassages_Click()) {
        Capturer(*f, out + "frm_stats_passages.png");
        f->close();
    }
    // The compliance view of last month.
    w.OngletsMain()->setCurrentIndex(0);
    if (auto* musique = w.findChild<QTabBar*>("SftTabsMusique")) musique->setCurrentIndex(3);
    if (auto* juger = w.findChild<QPushButton*>("CommandJuger")) juger->click();
    Capturer(w, out + "frm_main_conformite.png");
    w.OngletsMain()->setCurrentIndex(2);
    if (auto* verifier = w.findChild<QPushButton*>("CommandVerifier")) verifier->click();
    Capturer(w, out + "frm_main_incidents.png");

    // The windows around the main window.
    auto* multi = w.RechercheMulti();
    multi->show();
    multi->Rechercher();
    Capturer(*multi, out + "frm_liste_recherche_multi.png");
    if (QDialog* d = multi->OuvrirDiffusions(0)) Capturer(*d, out + "frm_diffusions_morceau.png");
    w.ChoisirRapport(zl3::Rapport::Publicite);
    if (auto* detail = w.DetailPublicite(1)) Capturer(*detail, out + "frm_detail_donnees.png");
    zl3::gui::FrmAbout about(&w);
    about.show();
    Capturer(about, out + "frm_about.png");
    if (auto* notes = zl3::gui::AfficherNote(&w, 1)) Capturer(*notes, out + "frm_notes.png");
    if (auto* nouveautes = zl3::gui::AfficherNouveautes(&w))
        Capturer(*nouveautes, out + "frm_nouveautes.png");
    zl3::gui::FrmSelectBase bases(&w);
    bases.show();
    Capturer(bases, out + "frm_select_base.png");
    zl3::gui::FrmProgression progression(&w);
    progression.Debut(QStringLiteral("Vérification des données..."), 100);
    progression.Avancer(40);
    Capturer(progression, out + "frm_progression.png");

    zl3::gui::FrmMsgBoxDialog question(zl3::MessageRequest{
        "Voulez-vous quitter le programme ?", "Zelvar: Tools Stats", zl3::kMbYesNo | zl3::kMbQuestion});
    question.show();
    Capturer(question, out + "frm_msgbox_question.png");
    zl3::gui::FrmMsgBoxDialog erreur(zl3::MessageRequest{
        "Application encore chargée en mémoire.\nVeuillez la quitter avant de relancer une autre "
        "instance de cette application.",
        "Zelvar: Tools Stats", zl3::kMbOk | zl3::kMbCritical});
    erreur.show();
    Capturer(erreur, out + "frm_msgbox_critique.png");
    question.close();
    erreur.close();

    w.DebugEcran()->show();
    Capturer(*w.DebugEcran(), out + "frm_debug_ecran.png");
    QMenu* outils = w.menuBar()->findChildren<QMenu*>().value(1);
    if (outils) {
        outils->popup(w.mapToGlobal(QPoint(60, 20)));
        Capturer(*outils, out + "menu_outils.png");
        outils->close();
    }
    // The options window, tab by tab, and the colour chooser.
    w.Mnu01Options_Click();
    if (auto* options = w.findChild<zl3::gui::FrmSetup*>()) {
        auto* onglets = options->findChild<QTabWidget*>("SftTabsSetup");
        for (int i = 0; onglets && i < onglets->count(); ++i) {
            onglets->setCurrentIndex(i);
            Capturer(*options, out + QStringLiteral("frm_setup_%1.png").arg(i));
        }
        options->close();
    }
    zl3::gui::FrmColorPicker choix(zl3::DefaultColor(16));
    choix.show();
    Capturer(choix, out + "frm_color_picker.png");
    choix.close();

    zl3::Etat().enSortie = true;
    w.close();
    return 0;
}
