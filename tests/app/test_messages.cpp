// Labels, message boxes, questions and the French error messages.
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "TestSite.h"

namespace zl3 {
namespace {

using MessagesTest = test::SiteTest;

TEST(Libelles, TableRowsAndVisiblePlaceholder) {
    EXPECT_EQ(Libelle_Fra("Internet", 8), "Fichier");
    EXPECT_EQ(Libelle_Fra("Internet", 12), "Taille: Local");
    EXPECT_EQ(Libelle_Fra("Divers06", 2), "Evénement");
    EXPECT_EQ(Libelle_Fra("Divers08", 2), "Catégorie");
    EXPECT_EQ(Libelle_Fra("Divers02", 4), "Exclusions");
    EXPECT_EQ(Libelle_Fra("Menu", 3), "???:Menu:3:???");
    EXPECT_EQ(Libelle_Fra("Inconnu", -1), "???:Inconnu:-1:???");
}

TEST(Boutons, CaptionsAndCloseButtonAnswer) {
    EXPECT_EQ(ButtonsOfStyle(kMbYesNo | kMbQuestion), (std::vector<int>{kIdYes, kIdNo}));
    EXPECT_EQ(ButtonsOfStyle(kMbAbortRetryIgnore),
              (std::vector<int>{kIdAbort, kIdRetry, kIdIgnore}));
    EXPECT_EQ(ButtonCaption(kIdRetry), "Réessayer");
    EXPECT_EQ(ButtonCaption(kIdAbort), "Abandonner");
    // Closing the box: "Annuler", then "Abandonner", then "Non", then "Ok".
    EXPECT_EQ(CloseButtonAnswer(kMbYesNo), kIdNo);
    EXPECT_EQ(CloseButtonAnswer(kMbYesNoCancel), kIdCancel);
    EXPECT_EQ(CloseButtonAnswer(kMbAbortRetryIgnore), kIdAbort);
    EXPECT_EQ(CloseButtonAnswer(kMbRetryCancel), kIdCancel);
    EXPECT_EQ(CloseButtonAnswer(kMbOk | kMbCritical), kIdOk);
}

TEST_F(MessagesTest, AffMsgShowsTracesAndReturnsTheAnswer) {
    box.Script(kIdYes);
    EXPECT_EQ(AffMsg("Voulez-vous quitter le programme ?", kTitreApplication, kMbYesNo), kIdYes);
    EXPECT_EQ(AffMsg("Ligne 1\r\nLigne 2", "T", kMbYesNo), kIdNo);  // unscripted: as if closed
    ASSERT_EQ(box.shown.size(), 2u);
    EXPECT_EQ(box.shown[0].request.title, kTitreApplication);
    EXPECT_EQ(box.shown[0].request.style, kMbYesNo);
    const auto& lines = Trace().lines;
    ASSERT_EQ(lines.size(), 4u);
    const std::string id1 = lines[0].substr(lines[0].rfind(":") + 1);
    EXPECT_NE(lines[0].find("FrmMsgBox: Voulez-vous quitter le programme ? |Id:"),
              std::string::npos);
    EXPECT_NE(lines[1].find("FrmMsgBox: Id:" + id1 + " closed"), std::string::npos);
    EXPECT_NE(lines[2].find("FrmMsgBox: [Ligne 1\r\nLigne 2] |Id:"), std::string::npos);
    EXPECT_NE(lines[0], lines[2]);
}

TEST_F(MessagesTest, FailingDialogAnswersAsClosed) {
    box.onShow = [](const MessageRequest&) { throw std::runtime_error("boom"); };
    EXPECT_EQ(AffMsg("x", "t", kMbYesNoCancel), kIdCancel);
}

TEST_F(MessagesTest, QuestionTrimsItsText) {
    box.Script(kIdNo);
    EXPECT_EQ(Question("  Voulez-vous stopper la recherche ?  ", "T", kMbYesNo | kMbQuestion),
              kIdNo);
    EXPECT_EQ(box.shown[0].request.text, "Voulez-vous stopper la recherche ?");
}

TEST_F(MessagesTest, ErrorMessagesTitlesAndIcons) {
    GestErr_Fra(kErrStationHorsLimite, "BTrieve (Source:Frm_Main)", false,
                "Lib_Data_Pervasive:BTRieve", "11");
    ASSERT_EQ(box.shown.size(), 1u);
    EXPECT_EQ(box.shown[0].request.text,
              "N° station hors limite:11\nBTrieve (Source:Frm_Main)\n(Sub: "
              "Lib_Data_Pervasive:BTRieve)");
    EXPECT_EQ(box.shown[0].request.title, "Droits");
    EXPECT_EQ(box.shown[0].request.style, kMbCritical);

    GestErr_Fra(kErrInformation, "Frm_Main", false, "");
    EXPECT_EQ(box.shown[1].request.style, kMbInformation);
    EXPECT_EQ(box.shown[1].request.title, kTitreApplication);

    GestErr_Fra(1001, "Frm_Main", false, "");
    EXPECT_EQ(box.shown[2].request.style, kMbCritical);
    EXPECT_EQ(box.shown[2].request.title, kTitreApplication);

    box.Script(kIdOk);
    box.Script(kIdOk);
    GestErr_Fra(2003, "Frm_Main", false, "", "a.xls");
    EXPECT_EQ(box.shown[3].request.style, kMbExclamation);
    EXPECT_EQ(box.shown[3].request.text, "Impossible de supprimer le fichier: a.xls");
    EXPECT_EQ(Trace().lastAnswer, kIdOk);

    GestErr_Fra(1002, "", false, "");  // empty source: the rights title too
    EXPECT_EQ(box.shown[4].request.title, "Droits");
    EXPECT_EQ(box.shown[4].request.text, "Mot de passe erroné");
}

TEST_F(MessagesTest, UnknownCodesAndQuietReports) {
    EXPECT_EQ(TexteErreur(1000), "Err: 1000 inconnue");
    EXPECT_EQ(TexteErreur(2000), "Err: 2000 inconnue");
    EXPECT_EQ(TexteErreur(11000), "Err: 11000 inconnue");
    EXPECT_EQ(TexteErreur(77), "Err: 77 inconnue");
    EXPECT_EQ(TexteErreur(kErrProblemeDossier, "/x/"), "Problème avec le dossier '/x/'");
    EXPECT_EQ(TexteErreur(kErrDossierConfigInitialise, "C:\\Config\\"),
              "Dossier de config initialisé à 'C:\\Config\\'");
    GestErr_Fra(4, "Frm_Main", true, "Frm_Main:Form_Load");
    EXPECT_TRUE(box.shown.empty());
    ASSERT_FALSE(Trace().lines.empty());
    EXPECT_NE(Trace().lines.back().find("Err: 4: P16R16.DLL absent (Sub: Frm_Main:Form_Load)"),
              std::string::npos)
        << Trace().lines.back();
}

}  // namespace
}  // namespace zl3
