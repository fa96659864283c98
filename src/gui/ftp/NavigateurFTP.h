// The FTP browser on one FTP entry of the options window: opens FrmSetupFTPUpload (modal) on the
// entry's server, user, password, mode, folder and TLS option; when the user hands the values
// back (CommandTransferer) they are written into the entry and the answer is true. Closed
// otherwise: the entry is left as it was and the answer is false.
#pragma once

#include "Lib_Settings.h"

class QWidget;

namespace zl3::gui {

bool OuvrirNavigateurFTP(QWidget* parent, ServeurFTP& entree);

}  // namespace zl3::gui
