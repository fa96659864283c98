#include "CommandeConformite.h"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "CibleSortie.h"
#include "Conformite.h"
#include "Demarrage.h"
#include "FichierPdf.h"
#include "GrilleTexte.h"
#include "ImpressionConformite.h"
#include "Incidents.h"
#include "Lib_Config.h"
#include "Lib_Export.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Recherche.h"
#include "ReleveDroits.h"
#include "Services.h"
#include "SessionRapport.h"

namespace zl3 {
namespace {

const char* gUsage = "";

int Erreur(const std::string& message) {
    std::fprintf(stderr, "zl3-stats: %s\n%s", message.c_str(), gUsage);
    return 2;
}

// "YYYY-MM", a real month.
bool LireMois(const std::string& texte, int& annee, int& mois) {
    if (texte.size() != 7 || texte[4] != '-') return false;
    for (size_t i = 0; i < 7; ++i)
        if (i != 4 && (texte[i] < '0' || texte[i] > '9')) return false;
    annee = std::stoi(texte.substr(0, 4));
    mois = std::stoi(texte.substr(5, 2));
    return annee >= 2000 && annee <= 2200 && mois >= 1 && mois <= 12;
}

// The export step's messages on the console; its overwrite question is answered by --overwrite.
class MessagesConsole : public MessageBoxUi {
  public:
    explicit MessagesConsole(bool ecraser) : ecraser_(ecraser) {}
    int Show(const MessageRequest& request) override {
        std::fprintf(stderr, "%s\n", request.text.c_str());
        if ((request.style & 0x0F) == kMbYesNo) return ecraser_ ? kIdYes : kIdNo;
        return CloseButtonAnswer(request.style);
    }

  private:
    bool ecraser_;
};

bool EcrireSortieStandard(const std::string& texte) {
    const bool ecrit = std::fwrite(texte.data(), 1, texte.size(), stdout) == texte.size();
    return ecrit && std::fflush(stdout) == 0 && !std::ferror(stdout);
}

// --root, --base and --station, read and checked; an exit code when they are wrong.
std::optional<int> LireStation(OptionsLigne& options, std::string& root, long long& base,
                               long long& station) {
    const auto r = options.Valeur("root");
    if (!r || r->empty()) return Erreur("l'option --root est obligatoire");
    root = *r;
    base = 1;
    station = 0;
    if (!options.Entier("base", 1, kNbMaxBases, base) ||
        !options.Entier("station", 1, kNbMaxStations, station))
        return Erreur(options.Erreur());
    if (station == 0) return Erreur("l'option --station est obligatoire");
    return std::nullopt;
}

// The site under `root`, then the station's files that `rapport` reads, opened in `session`;
// an exit code when the site, the base, the station or those files are not there.
std::optional<int> OuvrirStation(const std::string& root, long long base, long long station,
                                 Rapport rapport, SessionRapport& session) {
    if (!sys::FolderExists(root)) {
        std::fprintf(stderr, "zl3-stats: dossier racine introuvable: %s\n", root.c_str());
        return 1;
    }
    sys::SetZelvarRoot(root);
    InitGeneral();
    const Configuration& config = Config();
    if (base > static_cast<long long>(config.bases.size()))
        return Erreur("base " + std::to_string(base) + " inconnue: le site a " +
                      std::to_string(config.bases.size()) + " base(s)");
    const ConfigBase& b = config.bases[static_cast<size_t>(base - 1)];
    if (station > b.nbStation)
        return Erreur("station " + std::to_string(station) + " inconnue: la base " +
                      Deux(static_cast<int>(base)) + " a " + std::to_string(b.nbStation) +
                      " station(s)");
    const int st = static_cast<int>(station);
    session.Ouvrir(static_cast<int>(base), st, st);
    if (session.Pret(rapport, st)) return std::nullopt;
    std::string manquants;
    for (const std::string& f : session.FichiersManquants(rapport, st))
        manquants += (manquants.empty() ? "" : ", ") + f;
    session.Fermer();
    TraceLogForce();
    std::fprintf(stderr, "zl3-stats: la base de données de la station %d est illisible (%s: %s)\n",
                 st, b.dossiers[kRepBtr].c_str(), manquants.c_str());
    return 1;
}

// The grid written to `cible` in `format` ("xls", "xlsx" or "xml") through the export step,
// answering its overwrite question from --overwrite. Returns `codeOk` once written, 1 otherwise.
int ExporteVersCible(const Grid& grille, const std::string& format, const std::string& cible,
                     const std::string& nomParDefaut, const char* feuille, const char* procedure,
                     bool ecraser, int codeOk) {
    MessagesConsole console(ecraser);
    ScopedServices services(Services{&console, nullptr, nullptr, nullptr});
    DemandeExport d;
    d.format = format == "xml"    ? FormatExport::Xml
               : format == "xlsx" ? FormatExport::Xlsx
                                  : FormatExport::Xls;
    d.dossier = std::filesystem::absolute(cible).parent_path().string();
    d.nomParDefaut = nomParDefaut + ExtensionExport(d.format);
    d.nomFeuille = feuille;
    d.elementRacine = "Root";
    d.elementCollection = "Collection";
    d.apresExport = 2;
    d.module = "zl3-stats";
    d.procedure = procedure;
    const ResultatExport r = ExporteGrille(
        grille, d,
        [&](const std::string&, const std::string&, const std::string&) { return cible; });
    TraceLogForce();
    if (r.Ok()) return codeOk;
    if (r.issue == IssueExport::NonEcrase)
        std::fprintf(stderr, "zl3-stats: fichier existant gardé (--overwrite pour le remplacer)\n");
    else if (!r.erreur.empty())
        std::fprintf(stderr, "zl3-stats: %s\n", r.erreur.c_str());
    return 1;
}

}  // namespace

// The file named by --out, with the format's extension, checked before anything is read: a
// name that can never be written is an argument error, an existing file kept ends the run.
std::optional<int> ControlerCible(const OptionsLigne& options, const std::string& format,
                                  std::string& cible, const char* usage) {
    gUsage = usage;
    const auto out = options.Valeur("out");
    if (!out) return std::nullopt;
    cible = *out;
    if (const ControleCible brut = ControleCibleSortie(cible, true); !brut.Accepte())
        return Erreur(brut.message);
    if (format == "xls") cible = AvecExtension(cible, FormatExport::Xls);
    if (format == "xml") cible = AvecExtension(cible, FormatExport::Xml);
    if (format == "xlsx") cible = AvecExtension(cible, FormatExport::Xlsx);
    if (format == "pdf") cible = AvecExtensionPdf(cible);
    const ControleCible controle = ControleCibleSortie(cible, options.A("overwrite"));
    if (controle.verdict == VerdictCible::Gardee) {
        std::fprintf(stderr, "zl3-stats: %s\n", controle.message.c_str());
        return 1;
    }
    if (!controle.Accepte()) return Erreur(controle.message);
    return std::nullopt;
}

int CommandeConformite(const OptionsLigne& lues, const char* usage) {
    gUsage = usage;
    OptionsLigne options = lues;
    std::string root;
    long long base = 1, station = 0;
    if (const auto code = LireStation(options, root, base, station)) return *code;
    if (options.Valeur("from") || options.Valeur("to"))
        return Erreur(
            "le rapport conformite porte sur un mois: --month AAAA-MM au lieu de "
            "--from et --to");
    const auto texteMois = options.Valeur("month");
    if (!texteMois) return Erreur("l'option --month est obligatoire (AAAA-MM)");
    int annee = 0, mois = 0;
    if (!LireMois(*texteMois, annee, mois))
        return Erreur("mois incorrect pour --month: '" + *texteMois + "' (AAAA-MM)");
    std::optional<Regime> regime;  // the station's own when not given
    if (const auto r = options.Valeur("regime")) {
        regime = RegimeDeCode(*r);
        if (!regime) return Erreur("régime inconnu: '" + *r + "' (40-20, 60-10, 35-25 ou 15)");
    }
    const std::string format = options.Valeur("format").value_or("table");
    if (format != "table" && format != "csv" && format != "xls" && format != "xlsx" &&
        format != "xml" && format != "pdf")
        return Erreur("format inconnu: '" + format + "' (table, csv, xls, xlsx, xml ou pdf)");
    if (format != "table" && format != "csv" && !options.Valeur("out"))
        return Erreur("l'option --out est obligatoire pour le format " + format);
    if (options.A("versions")) return Erreur("--versions ne s'applique pas au rapport conformite");

    std::string cible;
    if (const auto code = ControlerCible(options, format, cible, usage)) return *code;
    SessionRapport session(0);
    if (const auto code = OuvrirStation(root, base, station, Rapport::Quotas, session))
        return *code;
    const int st = static_cast<int>(station);
    const ConfigBase& b = Config().bases[static_cast<size_t>(base - 1)];

    ParametresConformite p;
    p.annee = annee;
    p.mois = mois;
    p.station = st;
    p.source = session.Source();
    p.base = static_cast<int>(base);
    p.regime = regime ? *regime : RegimeStation(p.base, st);
    const VerdictConformite v = JugeConformite(p);
    session.Fermer();
    TraceLogForce();
    if (!v.effectue) {
        for (const std::string& e : v.erreurs)
            std::fprintf(stderr, "zl3-stats: %s\n", e.c_str());
        return 2;
    }
    const int codeVerdict = v.incomplete ? 4 : v.issue == Issue::Conforme ? 0 : 3;

    Grid grille;
    RemplirGrilleConformite(v, grille);
    const bool csvSurSortie = format == "csv" && cible.empty();
    if (!csvSurSortie && !EcrireSortieStandard(TexteVerdict(v))) {
        std::fprintf(stderr, "zl3-stats: impossible d'écrire la sortie standard\n");
        return 1;
    }
    if (format == "table" || format == "csv") {
        if (cible.empty()) {
            if (format == "csv" && !EcrireSortieStandard(GrilleEnCsv(grille))) {
                std::fprintf(stderr, "zl3-stats: impossible d'écrire la sortie standard\n");
                return 1;
            }
            return codeVerdict;
        }
        const ResultatEcriture e = EcritTexteSortie(
            cible, format == "csv" ? GrilleEnCsv(grille) : GrilleEnTableau(grille));
        if (!e.ok) {
            std::fprintf(stderr, "zl3-stats: impossible d'écrire %s: %s\n", cible.c_str(),
                         e.erreur.c_str());
            return 1;
        }
        return codeVerdict;
    }
    if (format == "pdf") {
        const std::string libStation = st <= static_cast<int>(b.stations.size())
                                           ? b.stations[static_cast<size_t>(st - 1)].lib
                                           : std::string();
        SystemClock horloge;
        const ResultatEcriture r =
            ImprimeConformitePdf(v, grille, b.lib, libStation, horloge.Now(), cible);
        if (r.ok) return codeVerdict;
        std::fprintf(stderr, "zl3-stats: %s\n", r.erreur.c_str());
        return 1;
    }
    return ExporteVersCible(grille, format, cible, NomFichierConformite(st, annee, mois),
                            "Conformite", "CommandeConformite", options.A("overwrite"),
                            codeVerdict);
}

int CommandeReleveDroits(const OptionsLigne& lues, const char* usage) {
    gUsage = usage;
    OptionsLigne options = lues;
    std::string root;
    long long base = 1, station = 0;
    if (const auto code = LireStation(options, root, base, station)) return *code;
    if (options.Valeur("from") || options.Valeur("to") || options.Valeur("month") ||
        options.Valeur("regime") || options.A("versions"))
        return Erreur("le relevé droits porte sur un semestre: --half AAAA-S1 ou AAAA-S2");
    const auto texte = options.Valeur("half");
    if (!texte) return Erreur("l'option --half est obligatoire (AAAA-S1 ou AAAA-S2)");
    int annee = 0, semestre = 0;
    {
        const std::string& t = *texte;
        bool ok = t.size() == 7 && t[4] == '-' && t[5] == 'S' && (t[6] == '1' || t[6] == '2');
        for (size_t i = 0; ok && i < 4; ++i)
            ok = t[i] >= '0' && t[i] <= '9';
        if (ok) {
            annee = std::stoi(t.substr(0, 4));
            semestre = t[6] - '0';
        }
        if (!ok || annee < 2000 || annee > 2200)
            return Erreur("semestre incorrect pour --half: '" + t + "' (AAAA-S1 ou AAAA-S2)");
    }
    const std::string format = options.Valeur("format").value_or("table");
    if (format != "table" && format != "csv" && format != "xls" && format != "xlsx" &&
        format != "xml")
        return Erreur("format inconnu pour le relevé: '" + format +
                      "' (table, csv, xls, xlsx ou xml)");
    if (format != "table" && format != "csv" && !options.Valeur("out"))
        return Erreur("l'option --out est obligatoire pour le format " + format);
    std::string cible;
    if (const auto code = ControlerCible(options, format, cible, usage)) return *code;
    SessionRapport session(0);
    if (const auto code = OuvrirStation(root, base, station, Rapport::Sacem, session)) return *code;
    const int st = static_cast<int>(station);
    ParametresReleve p;
    p.annee = annee;
    p.semestre = semestre;
    p.station = st;
    p.source = session.Source();
    p.dossiersSons = DossiersSonsMusique(static_cast<int>(base));
    const ReleveDroits r = EtablirReleveDroits(p);
    session.Fermer();
    if (!r.effectue) {
        for (const std::string& e : r.erreurs)
            std::fprintf(stderr, "zl3-stats: %s\n", e.c_str());
        return 2;
    }
    // The tracks whose tags are missing join the incidents list of the "Incidents" tab.
    if (!r.incidents.empty()) {
        ListeIncidents liste;
        liste.Charger(FichierIncidents());
        liste.Ajouter(r.incidents);
        liste.Enregistrer();
        for (const Incident& i : r.incidents)
            std::fprintf(stderr, "zl3-stats: %s: %s\n", LibelleGenre(i.genre), i.texte.c_str());
        std::fprintf(stderr, "zl3-stats: %zu morceau(x) sans leurs tags sur %zu\n",
                     r.incidents.size(), r.lignes.size());
    }
    if (r.incomplete)
        std::fprintf(stderr, "zl3-stats: %s\n", TexteRapportIncomplet(r.erreurs).c_str());
    TraceLogForce();
    const int code = r.incomplete ? 4 : r.incidents.empty() ? 0 : 3;
    Grid grille;
    RemplirGrilleReleve(r, grille);
    if (format == "table" || format == "csv") {
        const std::string texteGrille =
            format == "csv" ? GrilleEnCsv(grille) : GrilleEnTableau(grille);
        if (cible.empty()) {
            if (!EcrireSortieStandard(texteGrille)) {
                std::fprintf(stderr, "zl3-stats: impossible d'écrire la sortie standard\n");
                return 1;
            }
            return code;
        }
        const ResultatEcriture e = EcritTexteSortie(cible, texteGrille);
        if (!e.ok) {
            std::fprintf(stderr, "zl3-stats: impossible d'écrire %s: %s\n", cible.c_str(),
                         e.erreur.c_str());
            return 1;
        }
        return code;
    }
    return ExporteVersCible(grille, format, cible, NomFichierReleve(st, annee, semestre),
                            "Releve droits", "CommandeReleveDroits", options.A("overwrite"), code);
}

}  // namespace zl3
