#include "Lib_Stats.h"

#include "EtatGlobal.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Public.h"
#include "records/Layouts.h"
#include "records/RecordAccess.h"

namespace zl3 {
namespace {

const char* kModule = "Lib_Stats:";

// One Get Equal on key 0 of `fichier`; status 0 gives the field trimmed (written back trimmed
// into the record buffer), status 4 the "not found" text, any other status is reported and
// `resultat` stays as it was.
void Lecture(int source, int station, int fichier, const std::string& cle, const rec::Field& champ,
             const std::string& introuvable, const std::string& procedure, std::string& resultat) {
    OperationBTrieve = kBtrGetEqual;
    CleBTrieve = cle;
    NoCleBTrieve = 0;
    FichierBTrieve = fichier;
    BTRieve(source, OperationBTrieve, CleBTrieve, NoCleBTrieve, FichierBTrieve, station,
            kModule + procedure);
    if (StatutBTrieve == 4) {
        resultat = introuvable;
    } else if (StatutBTrieve == 0) {
        auto tampon = TamponEnreg(fichier);
        resultat = Trim(rec::GetText(tampon, champ));
        rec::SetText(tampon, champ, resultat);
    } else {
        ErreurBTrieve(source, fichier, CleBTrieve, kModule + procedure, station);
    }
}

std::string Attribut(int source, int station, const std::string& type, const std::string& code,
                     const std::string& introuvable, const std::string& procedure) {
    if (Trim(code).empty()) return "";
    std::string r;
    Lecture(source, station, kFichierAttributs,
            Calibre(type, 5) + Calibre(code, static_cast<int>(rec::Categorie::CodeAttribut.length)),
            rec::Categorie::Libelle, introuvable + code, procedure, r);
    return r;
}

}  // namespace

std::string LibClient(int source, int station, const std::string& code) {
    TraceProc(std::string(kModule) + "LibClient");
    if (Trim(code).empty()) return "";
    std::string r;
    Lecture(source, station, kFichierClients,
            Calibre(code, static_cast<int>(rec::Client::CodeClient.length)), rec::Client::NomClient,
            "Client: " + code, "LibClient", r);
    return r;
}

std::string LibArtiste(int source, int station, const std::string& code1, const std::string& code2,
                       bool option) {
    TraceProc(std::string(kModule) + "LibArtiste");
    const int largeur = static_cast<int>(rec::Artiste::CodeArtiste.length);
    std::string r;
    if (!Trim(code1).empty())
        Lecture(source, station, kFichierArtistes, Calibre(code1, largeur),
                rec::Artiste::NomArtiste, "Artiste: " + code1, "LibArtiste", r);
    if (!Trim(code2).empty()) {
        std::string second;
        Lecture(source, station, kFichierArtistes, Calibre(code2, largeur),
                rec::Artiste::NomArtiste, "Artiste: " + code2, "LibArtiste", second);
        r += " + " + second;
    }
    if (option && !Trim(r).empty()) {
        for (size_t p = r.find(" && "); p != std::string::npos; p = r.find(" && ", p + 3))
            r.replace(p, 4, " & ");
    }
    return r;
}

std::string LibCategorie(int source, int station, const std::string& code) {
    TraceProc(std::string(kModule) + "LibCategorie");
    return Attribut(source, station, "CATEG", code, "Catégorie: ", "LibCategorie");
}

std::string LibLabel(int source, int station, const std::string& code) {
    TraceProc(std::string(kModule) + "LibLabel");
    return Attribut(source, station, "LABEL", code, "Label: ", "LibLabel");
}

VersionsSons& Versions() {
    static VersionsSons v;
    return v;
}

namespace {
void ResetVersions() {
    Versions() = VersionsSons{};
}
const EnregistrementEtat kEtatVersions{"Lib_Stats", &ResetVersions};
}  // namespace

void InitGeneralVersionSons(int source, int station) {
    const std::string identity = std::string(kModule) + "InitGeneralVersionSons";
    TraceProc(identity);
    VersionsSons& v = Versions();
    v = VersionsSons{};
    try {
        namespace mi = rec::MorceauInfos;
        const std::string basse = std::string("000") + std::string(5, '\0') + std::string(2, '\0');
        const std::string haute =
            std::string("999") + std::string(5, '\xFF') + std::string(2, '\xFF');
        std::string cle = basse;
        int16_t op = kBtrGetGreaterOrEqual;
        for (;;) {
            BTRieve(source, op, cle, 0, kFichierInfosMorceaux, station, identity);
            op = kBtrGetNext;
            if (StatutBTrieve == 9) break;
            if (StatutBTrieve != 0) {
                ErreurBTrieve(source, kFichierInfosMorceaux, cle, identity, station);
                break;
            }
            if (cle > haute) break;
            auto tampon = TamponEnreg(kFichierInfosMorceaux);
            const std::string cleLue = rec::GetBytes(tampon, mi::Cle);
            const std::string zone = rec::GetBytes(tampon, mi::Zone);
            if (Trim(zone).empty()) {
                std::string cleSuppr = cleLue;
                BTRieve(source, kBtrDelete, cleSuppr, 0, kFichierInfosMorceaux, station, identity);
                if (StatutBTrieve != 0)
                    ErreurBTrieve(source, kFichierInfosMorceaux, cleSuppr, identity, station);
                TraceLog("Version: deleted blank record " + cleLue);
                // The deleted record's successor is found from its key.
                cle = cleLue;
                op = kBtrGetGreaterOrEqual;
                continue;
            }
            if (rec::GetBytes(tampon, mi::TypeInfo) != mi::kTypeVersions) continue;
            const std::string cleMorceau = rec::GetBytes(tampon, mi::CleMorceau);
            std::string ligne = Trim(cleMorceau) + ",";
            bool reecrire = false;
            for (int i = 0; i < mi::kNbVersions; ++i) {
                const rec::Field entree = mi::Version(i);
                const std::string version = rec::GetBytes(tampon, entree);
                if (Trim(version).empty()) continue;
                if (version == cleMorceau) {
                    rec::SetBytes(tampon, entree, std::string(mi::kLongueurVersion, ' '));
                    reecrire = true;
                    continue;
                }
                ligne += Trim(version) + ",";
                v.texte += Trim(version) + ",";
                v.principal.emplace(Trim(version), Trim(cleMorceau));
            }
            if (reecrire) {
                std::string cleMaj = cleLue;
                BTRieve(source, kBtrUpdate, cleMaj, 0, kFichierInfosMorceaux, station, identity);
                if (StatutBTrieve != 0)
                    ErreurBTrieve(source, kFichierInfosMorceaux, cleMaj, identity, station);
            }
            v.lignes.push_back(ligne);
            TraceLog("Version: " + ligne);
        }
        if (!Trim(v.texte).empty()) {
            TraceLog("========");
            TraceLog("Version: " + v.texte);
            TraceLog("========");
        }
        v.charge = true;
    } catch (const std::exception& e) {
        TraceErreur(identity, 0, e.what());
    }
}

}  // namespace zl3
