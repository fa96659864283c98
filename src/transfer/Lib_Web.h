// Lib_Web: remote folders and addresses, and the guard on names that come from a server.
#pragma once

#include <string>

namespace zl3 {

// A name read from a server's listing can be written as a file of the chosen local folder: not
// empty, not "." or "..", no "/" or "\", no ":" (drive letters, Windows streams), no control
// character. Anything else could land outside the folder.
bool NomLocalSur(const std::string& nom);
// The name fit for a trace line: control characters shown as "?".
std::string NomVisible(const std::string& nom);
// The refusal trace of an unsafe name.
void TraceNomRefuse(const std::string& nom);

// The update download's folder: "/" stays; otherwise a leading and a trailing "/" are added when
// missing, and every "//" is folded to "/".
std::string NormaliseDossierFTP(const std::string& dossier);
// A path made fit for an address: "\" becomes "/", runs of "/" fold to one, ends kept.
std::string CheckFolderInternet(const std::string& chemin);
// A folder of the settings (possibly with "\" and no leading "/") as a remote path.
std::string ClearDossierFTP(const std::string& dossier);
// Splits "scheme://server/path" (the scheme is optional) into server and path; false when
// either part is empty.
bool StartUpdate(const std::string& adresse, std::string& serveur, std::string& chemin);

// Short text of a WinInet code as the browser's table gives it ("TimeOut", "Cannot Connect", …).
std::string LibInternetError(long code);
// The system text of a WinInet code.
std::string GetWinInetErrDesc(long code);
// The browser's framed trace of a WinInet error; `reponseServeur` is the server's last reply.
void AffichageDesErreurs(long code, const std::string& reponseServeur);

// "###,##0.00": thousands with ",", two decimals with ".".
std::string FormatMilliers2(double valeur);

}  // namespace zl3
