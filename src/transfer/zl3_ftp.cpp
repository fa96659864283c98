// zl3-ftp: the tool's FTP transfers from a script (scheduled transfers): list a remote folder,
// upload a file, or download a remote folder into a local folder as the update download does.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "Download.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "OptionsLigne.h"
#include "Services.h"
#include "cFTP.h"

namespace {

const char* kUsage =
    "Usage:\n"
    "  zl3-ftp --server HOTE[:PORT] --user NOM [options] --list DOSSIER\n"
    "  zl3-ftp --server HOTE[:PORT] --user NOM [options] --put FICHIER [--dir DOSSIER]\n"
    "  zl3-ftp --server HOTE[:PORT] --user NOM [options] --download DOSSIER --local DOSSIER_LOCAL\n"
    "  --list D       liste le dossier distant D (nom, taille ou <Dossier>, date)\n"
    "  --put F        envoie le fichier local F (binaire) dans le dossier distant --dir\n"
    "  --download D   télécharge les fichiers du dossier distant D dans --local\n"
    "  --password P   mot de passe (sinon la variable ZL3_FTP_PASSWORD)\n"
    "  --passive      mode passif (actif par défaut)\n"
    "  --ftps         TLS explicite (AUTH TLS); --insecure n'en vérifie pas le certificat\n"
    "  --timeout S    attente maximale du réseau, en secondes (30 par défaut)\n"
    "  --trace        écrit les lignes de trace sur la sortie d'erreur\n"
    "Codes de sortie: 0 succès, 1 échec FTP ou local, 2 arguments incorrects.\n";

int Usage(const std::string& message) {
    std::fprintf(stderr, "zl3-ftp: %s\n%s", message.c_str(), kUsage);
    return 2;
}

int Echec(const std::string& message) {
    std::fprintf(stderr, "zl3-ftp: %s\n", message.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    zl3::sys::ArgumentsUtf8 utf8(argc, argv);  // file names outside ASCII, on Windows too
    argc = utf8.Argc();
    argv = utf8.Argv();
    using namespace zl3;
    OptionsLigne options(
        {"server", "user", "password", "list", "put", "dir", "download", "local", "timeout"},
        {"passive", "ftps", "insecure", "trace", "help"});
    if (!options.Analyse(argc, argv)) return Usage(options.Erreur());
    if (!options.Arguments().empty()) return Usage("argument inattendu: " + options.Arguments()[0]);
    if (options.A("help")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    const int actions = options.A("list") + options.A("put") + options.A("download");
    if (actions != 1) return Usage("une action et une seule: --list, --put ou --download");
    const auto serveur = options.Valeur("server");
    if (!serveur || !ftp::AnalyseServeur(*serveur))
        return Usage("l'option --server est obligatoire (HOTE ou HOTE:PORT)");
    const auto utilisateur = options.Valeur("user");
    if (!utilisateur) return Usage("l'option --user est obligatoire");
    std::string motDePasse;
    if (const auto p = options.Valeur("password"))
        motDePasse = *p;
    else if (const char* e = std::getenv("ZL3_FTP_PASSWORD"))
        motDePasse = e;
    long long delaiS = 30;
    if (!options.Entier("timeout", 1, 3600, delaiS)) return Usage(options.Erreur());
    if (options.A("download") && !options.Valeur("local"))
        return Usage("l'option --local est obligatoire avec --download");

    SystemClock horloge;
    ConsoleMessageBox console;
    EventLoop evenements;
    ScopedServices services(Services{&console, &horloge, &evenements, nullptr});
    Trace().writeToFile = false;
    if (options.A("trace"))
        Trace().onLine = [](const std::string& l) { std::fprintf(stderr, "%s\n", l.c_str()); };

    if (options.A("download")) {
        LogiqueDownload d;
        d.TxtServer = *serveur;
        d.TxtUser = *utilisateur;
        d.TxtPassword = motDePasse;
        d.OptionCnx = options.A("passive") ? 1 : 0;
        d.ftps = options.A("ftps");
        d.delaiMs = delaiS * 1000;
        d.TextDossierFTP = *options.Valeur("download");
        d.dossierLocal = *options.Valeur("local");
        if (!sys::FolderExists(d.dossierLocal))
            return Echec("dossier local introuvable: " + d.dossierLocal);
        d.Form_Load();
        if (!d.ConnectDownload()) return Echec("connexion impossible à " + *serveur);
        if (!d.LectureDesFichiersSurServeurFTP())
            return Echec("dossier distant illisible: " + d.TextDossierFTP);
        const bool ok = d.FTPDownload();
        d.Deconnexion();
        std::printf("%d fichier(s) sur %zu reçu(s), %lld octets sur %lld\n", d.fichiersRecus,
                    d.ListeTemporaire.size(), static_cast<long long>(d.octetsRecus),
                    static_cast<long long>(d.tailleListee));
        return ok ? 0 : 1;
    }

    cFTP ftp;
    if (options.A("passive")) ftp.SetModePassive();
    ftp.SetTransferBinary();
    ftp.SetFTPS(options.A("ftps"), !options.A("insecure"));
    ftp.SetDelaiReseau(delaiS * 1000);
    if (!ftp.OpenConnection(*serveur, *utilisateur, motDePasse))
        return Echec("connexion impossible: " + ftp.GetLastErrorMessage());
    if (const auto dossier = options.A("list") ? options.Valeur("list") : options.Valeur("dir")) {
        if (!dossier->empty() && !ftp.SetFTPDirectory(*dossier))
            return Echec("dossier distant introuvable: " + ftp.GetLastErrorMessage());
    }
    if (options.A("list")) {
        if (!ftp.GetDirectoryListing("*.*")) return Echec(ftp.GetLastErrorMessage());
        for (const auto& e : ftp.Directory()) {
            const std::string taille = e.EstDossier() ? "<Dossier>" : std::to_string(e.FileSize);
            std::printf("%s\t%s\t%s %s\n", e.FileName.c_str(), taille.c_str(),
                        FormatDDMMYYYY(e.LastWriteTime).c_str(),
                        FormatHHMMSS(e.LastWriteTime).c_str());
        }
        return 0;
    }
    const std::string local = *options.Valeur("put");
    if (!sys::FileExists(local)) return Echec("fichier local introuvable: " + local);
    int64_t taille = 0;
    const std::string nom = sys::TexteChemin(sys::CheminFs(local).filename());
    if (!ftp.FTPUploadFile(local, nom, taille)) return Echec(ftp.GetLastErrorMessage());
    std::printf("%s: %lld octets envoyés\n", nom.c_str(), static_cast<long long>(taille));
    return 0;
}
