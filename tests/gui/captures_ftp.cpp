// Screenshots of the FTP windows connected to a server, for a look by eye (not a test):
//   xvfb-run -a build/tests/gui/captures_ftp ROOT OUT_DIR HOST:PORT USER PASSWORD REMOTE_DIR
// The browser is connected and lists the server's start folder; the update download fetches
// REMOTE_DIR into ROOT's data folder (a folder "data" under ROOT).
#include <QApplication>
#include <QTreeWidget>

#include <cstdio>

#include "FrmDownload.h"
#include "FrmSetupFTPUpload.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Services.h"
#include "ServicesQt.h"

namespace {

class Silencieux : public zl3::MessageBoxUi {
  public:
    int Show(const zl3::MessageRequest& r) override {
        std::fprintf(stderr, "message: %s\n", r.text.c_str());
        return zl3::CloseButtonAnswer(r.style);
    }
};

void Capturer(QWidget& w, const QString& fichier) {
    QCoreApplication::processEvents();
    if (!w.grab().save(fichier)) std::fprintf(stderr, "cannot write %s\n", qPrintable(fichier));
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 7) {
        std::fprintf(stderr, "usage: captures_ftp ROOT OUT_DIR HOST:PORT USER PASSWORD DIR\n");
        return 2;
    }
    zl3::sys::SetZelvarRoot(argv[1]);
    const QString out = QString::fromLocal8Bit(argv[2]) + "/";
    zl3::SystemClock horloge;
    zl3::SystemShell shell;
    Silencieux boites;
    zl3::gui::EventLoopQt evenements;
    zl3::ScopedServices services(zl3::Services{&boites, &horloge, &evenements, &shell});

    zl3::gui::FrmSetupFTPUpload navigateur;
    navigateur.Charger(argv[3], argv[4], argv[5], 1, "", false, 0);
    navigateur.show();
    navigateur.CommandFTP_Click(zl3::LogiqueSetupFTPUpload::kConnecter);
    auto* lv = navigateur.findChild<QTreeWidget*>("lv");
    if (lv && lv->topLevelItemCount() > 1) lv->setCurrentItem(lv->topLevelItem(1));
    Capturer(navigateur, out + "frm_setup_ftp_upload.png");
    navigateur.ModeChoix(0, 1);
    Capturer(navigateur, out + "frm_setup_ftp_upload_choix.png");

    const std::string data = zl3::sys::WithTrailingSep(argv[1]) + "data";
    zl3::CheckRep(data);
    zl3::DefinirDossierData(data);
    zl3::gui::FrmDownload download;
    download.Charger(argv[3], argv[4], argv[5], 1, argv[6], false);
    download.show();
    download.CommandDownload_Click();
    Capturer(download, out + "frm_download.png");
    return 0;
}
