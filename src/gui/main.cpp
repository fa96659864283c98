// ZL3_Tools_Stats: the statistics tool's window.
#include <QApplication>

#include <string>

#include "Frm_Main.h"
#include "FrmMsgBox.h"
#include "Lib_Public.h"
#include "ServicesQt.h"
#include "Services.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    app.setApplicationName("ZL3_Tools_Stats");
    app.setQuitOnLastWindowClosed(false);  // the notification-area icon keeps the tool running

    // The whole command line, as the suite passes it (Qt reads Windows' wide command line, so
    // names outside the ANSI code page arrive whole).
    std::string ligne;
    const QStringList arguments = QCoreApplication::arguments();
    for (qsizetype i = 1; i < arguments.size(); ++i)
        ligne += (i > 1 ? " " : "") + arguments[i].toStdString();

    zl3::SystemClock horloge;
    zl3::SystemShell shell;
    zl3::gui::FrmMsgBox boites;
    zl3::gui::EventLoopQt evenements;
    zl3::ScopedServices services(zl3::Services{&boites, &horloge, &evenements, &shell});

    zl3::gui::Frm_Main fenetre(ligne);
    evenements.avantEvenements = [&fenetre] { fenetre.SuivreGrillesDeTempsEnTemps(); };
    if (!fenetre.Form_Initialize() || !fenetre.Form_Load()) {
        zl3::TraceLogForce();
        return 0;
    }
    fenetre.show();
    return app.exec();
}
