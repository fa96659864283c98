// zl3-stats: runs the tool's reports on a site without windows, for scripts and scheduled
// monthly reports.
#include <cstdio>
#include <filesystem>
#include <string>

#include "CibleSortie.h"
#include "CommandeConformite.h"
#include "Demarrage.h"
#include "FichierPdf.h"
#include "GrilleTexte.h"
#include "Incidents.h"
#include "Lib_Config.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Export.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "Lib_Tableur.h"
#include "OptionsLigne.h"
#include "Recherche.h"
#include "Services.h"
#include "SessionRapport.h"

namespace {

const char* kUsage =
    "Usage:\n"
    "  zl3-stats --root DIR --summary\n"
    "  zl3-stats --root DIR [--base N] --station N --report quotas|top|sacem|pub|incidents\n"
    "            --from YYYY-MM-DD --to YYYY-MM-DD [--format table|csv|xls|xlsx|xml|pdf]\n"
    "            [--out FILE] [--overwrite] [--versions]\n"
    "  zl3-stats --root DIR [--base N] --station N --report conformite --month YYYY-MM\n"
    "            [--regime 40-20|60-10|35-25|15] [--format F] [--out FILE] [--overwrite]\n"
    "  zl3-stats --root DIR [--base N] --station N --report droits --half YYYY-S1|YYYY-S2\n"
    "            [--format table|csv|xls|xlsx|xml] [--out FILE] [--overwrite]\n"
    "  --root DIR     dossier racine de l'installation (le poste Windows de la station)\n"
    "  --summary      initialise l'outil (configuration, journal) et affiche ce qu'il a trouvé\n"
    "  --base N       base (radio) à lire, 1 par défaut\n"
    "  --station N    station de la base (1 à 10)\n"
    "  --report R     quotas, top (Top Diffusion), sacem (relevé SACEM), pub (publicité),\n"
    "                 incidents (ce qui rend un rapport douteux: table ou csv seulement),\n"
    "                 conformite (le mois jugé selon les règles des quotas: code 0 conforme,\n"
    "                 3 non conforme ou indéterminé), droits (relevé des droits musicaux\n"
    "                 d'un semestre: code 3 quand des morceaux n'ont pas leurs tags)\n"
    "  --half S       semestre du relevé droits, AAAA-S1 (janvier-juin) ou AAAA-S2\n"
    "  --month M      mois jugé (conformite), AAAA-MM\n"
    "  --regime R     régime de la station (conformite): 40-20 (défaut), 60-10, 35-25 ou 15\n"
    "  --from/--to    période, dates incluses\n"
    "  --format F     table (défaut, pour un terminal), csv, xls (Excel 97-2003), xlsx (Excel),\n"
    "                 xml ou pdf (la page imprimée du rapport)\n"
    "  --out FILE     écrit le résultat dans FILE au lieu de la sortie standard (obligatoire\n"
    "                 pour xls, xlsx, xml et pdf; l'extension est ajoutée si elle manque)\n"
    "  --overwrite    remplace un fichier existant (sinon il est gardé); un fichier de la\n"
    "                 base de données (.bt6 et ses fichiers -wal, -shm) n'est jamais remplacé\n"
    "  --versions     regroupe les versions d'une même chanson (Top Diffusion, SACEM)\n"
    "Codes de sortie: 0 succès; 1 site illisible, fichier existant gardé ou erreur d'écriture;\n"
    "2 arguments incorrects (dont un --out vide, un dossier ou un fichier de la base);\n"
    "3 incidents trouvés (--report incidents), mois non conforme (--report conformite);\n"
    "4 rapport incomplet (erreur de lecture de la base: le résultat écrit est partiel).\n";

// Messages of the export step on the console; its overwrite question is answered by
// --overwrite.
class MessagesConsole : public zl3::MessageBoxUi {
  public:
    explicit MessagesConsole(bool ecraser) : ecraser_(ecraser) {}
    int Show(const zl3::MessageRequest& request) override {
        std::fprintf(stderr, "%s\n", request.text.c_str());
        if ((request.style & 0x0F) == zl3::kMbYesNo) return ecraser_ ? zl3::kIdYes : zl3::kIdNo;
        return zl3::CloseButtonAnswer(request.style);
    }

  private:
    bool ecraser_;
};

int Usage(const std::string& message) {
    std::fprintf(stderr, "zl3-stats: %s\n%s", message.c_str(), kUsage);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    zl3::sys::ArgumentsUtf8 utf8(argc, argv);  // file names outside ASCII, on Windows too
    argc = utf8.Argc();
    argv = utf8.Argv();
    using namespace zl3;
    OptionsLigne options({"root", "base", "station", "report", "from", "to", "format", "out",
                          "month", "regime", "half"},
                         {"summary", "help", "versions", "overwrite"});
    if (!options.Analyse(argc, argv)) return Usage(options.Erreur());
    if (!options.Arguments().empty()) return Usage("argument inattendu: " + options.Arguments()[0]);
    if (options.A("help")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (options.Valeur("report") == "conformite" && !options.A("summary"))
        return CommandeConformite(options, kUsage);
    if (options.Valeur("report") == "droits" && !options.A("summary"))
        return CommandeReleveDroits(options, kUsage);
    if (options.Valeur("month") || options.Valeur("regime"))
        return Usage("--month et --regime ne s'appliquent qu'au rapport conformite");
    if (options.Valeur("half")) return Usage("--half ne s'applique qu'au relevé droits");
    const auto root = options.Valeur("root");
    if (!root || root->empty()) return Usage("l'option --root est obligatoire");

    long long base = 1;
    long long station = 0;
    if (!options.Entier("base", 1, kNbMaxBases, base) ||
        !options.Entier("station", 1, kNbMaxStations, station))
        return Usage(options.Erreur());
    std::optional<Rapport> rapport;
    bool incidents = false;  // the data check instead of a report
    std::optional<DateTime> debut;
    std::optional<DateTime> fin;
    const std::string format = options.Valeur("format").value_or("table");
    if (!options.A("summary")) {
        const auto r = options.Valeur("report");
        if (!r) return Usage("l'option --report est obligatoire (ou --summary)");
        if (*r == "quotas")
            rapport = Rapport::Quotas;
        else if (*r == "top")
            rapport = Rapport::TopDiffusion;
        else if (*r == "sacem")
            rapport = Rapport::Sacem;
        else if (*r == "pub")
            rapport = Rapport::Publicite;
        else if (*r == "incidents")
            incidents = true;
        else
            return Usage("rapport inconnu: '" + *r +
                         "' (quotas, top, sacem, pub, incidents, conformite ou droits)");
        if (incidents && format != "table" && format != "csv")
            return Usage("le rapport incidents s'écrit en table ou en csv");
        if (station == 0) return Usage("l'option --station est obligatoire");
        const auto from = options.Valeur("from");
        const auto to = options.Valeur("to");
        if (!from || !to) return Usage("les options --from et --to sont obligatoires");
        debut = ParseIsoDate(*from);
        fin = ParseIsoDate(*to);
        if (!debut) return Usage("date incorrecte pour --from: '" + *from + "' (AAAA-MM-JJ)");
        if (!fin) return Usage("date incorrecte pour --to: '" + *to + "' (AAAA-MM-JJ)");
        if (DayDiff(*debut, *fin) < 0) return Usage("la période est vide: --to est avant --from");
        if (DayDiff(*debut, *fin) > 3660) return Usage("la période dépasse dix ans");
        if (format != "table" && format != "csv" && format != "xls" && format != "xlsx" &&
            format != "xml" && format != "pdf")
            return Usage("format inconnu: '" + format + "' (table, csv, xls, xlsx, xml ou pdf)");
        if (format != "table" && format != "csv" && !options.Valeur("out"))
            return Usage("l'option --out est obligatoire pour le format " + format);
    }
    // The output file is checked before anything is read: a name that can never be written
    // is a usage error, an existing file kept ends the run before the search.
    std::string cible;
    if (!options.A("summary"))
        if (const auto code = ControlerCible(options, format, cible, kUsage)) return *code;

    if (!sys::FolderExists(*root)) {
        std::fprintf(stderr, "zl3-stats: dossier racine introuvable: %s\n", root->c_str());
        return 1;
    }
    sys::SetZelvarRoot(*root);
    const bool initOk = InitGeneral();
    if (options.A("summary")) {
        std::fputs(ResumeConfiguration().c_str(), stdout);
        return initOk ? 0 : 1;
    }
    const Configuration& config = Config();
    if (base > static_cast<long long>(config.bases.size()))
        return Usage("base " + std::to_string(base) + " inconnue: le site a " +
                     std::to_string(config.bases.size()) + " base(s)");
    const ConfigBase& b = config.bases[static_cast<size_t>(base - 1)];
    if (station > b.nbStation)
        return Usage("station " + std::to_string(station) + " inconnue: la base " +
                     Deux(static_cast<int>(base)) + " a " + std::to_string(b.nbStation) +
                     " station(s)");

    const int st = static_cast<int>(station);
    SessionRapport session(0);
    session.Ouvrir(static_cast<int>(base), st, st);
    // The check reports the files it could not open as incidents of their own.
    if (!incidents && !session.Pret(*rapport, st)) {
        std::string manquants;
        for (const std::string& f : session.FichiersManquants(*rapport, st))
            manquants += (manquants.empty() ? "" : ", ") + f;
        session.Fermer();
        TraceLogForce();
        std::fprintf(stderr,
                     "zl3-stats: la base de données de la station %d est illisible (%s: %s)\n", st,
                     b.dossiers[kRepBtr].c_str(), manquants.c_str());
        return 1;
    }

    // Writes a grid as text (table or CSV) to --out or the standard output; `code` when written.
    auto ecritTexte = [&](const Grid& grille, int code) {
        const std::string texte = format == "csv" ? GrilleEnCsv(grille) : GrilleEnTableau(grille);
        if (options.Valeur("out")) {
            const ResultatEcriture e = EcritTexteSortie(cible, texte);
            if (!e.ok) {
                std::fprintf(stderr, "zl3-stats: impossible d'écrire %s: %s\n", cible.c_str(),
                             e.erreur.c_str());
                return 1;
            }
            return code;
        }
        // A full disk or a closed pipe behind the standard output is a failure, not a report.
        const bool ecrit = std::fwrite(texte.data(), 1, texte.size(), stdout) == texte.size();
        if (!ecrit || std::fflush(stdout) != 0 || std::ferror(stdout)) {
            std::fprintf(stderr, "zl3-stats: impossible d'écrire la sortie standard\n");
            return 1;
        }
        return code;
    };
    if (incidents) {
        ParametresVerification v;
        v.debut = *debut;
        v.fin = *fin;
        v.station = st;
        v.source = session.Source();
        const BilanVerification bv = VerifierDonnees(v);
        session.Fermer();
        TraceLogForce();
        Grid grille;
        InitTableurIncidents(grille);
        RemplirTableurIncidents(grille, bv.incidents);
        return ecritTexte(grille, bv.incidents.empty() ? 0 : 3);
    }

    TableursMusique musique;
    Grid publicite;
    InitGeneralTableurMusique(musique);
    InitGeneralTableurPublicite(publicite);
    RechercheStats recherche(musique, publicite);
    ParametresRecherche p;
    p.rapport = *rapport;
    p.debut = *debut;
    p.fin = *fin;
    p.station = st;
    p.source = session.Source();
    p.regrouperVersions = options.A("versions");
    recherche.CommandLancer_Click(p);
    session.Fermer();
    TraceLogForce();
    // A report that met read errors is written all the same, and said to be incomplete.
    const BilanRecherche& bilan = recherche.Bilan();
    const int codeFin = bilan.incomplete ? 4 : 0;
    auto termine = [&](int code) {
        if (bilan.incomplete)
            std::fprintf(stderr, "zl3-stats: %s\n", TexteRapportIncomplet(bilan.erreurs).c_str());
        return code;
    };

    Grid& grille = GrilleDuRapport(musique, publicite, *rapport);
    if (format == "pdf") {
        const std::string libStation = st <= static_cast<int>(b.stations.size())
                                           ? b.stations[static_cast<size_t>(st - 1)].lib
                                           : std::string();
        SystemClock horloge;
        const ResultatEcriture r =
            ImprimeRapportPdf(grille, *rapport, *debut, *fin, b.lib, libStation, horloge.Now(),
                              cible, options.A("overwrite"));
        if (r.ok) return termine(codeFin);
        std::fprintf(stderr, "zl3-stats: %s\n", r.erreur.c_str());
        return termine(1);
    }
    if (format == "xls" || format == "xlsx" || format == "xml") {
        const std::string out = cible;
        MessagesConsole console(options.A("overwrite"));
        ScopedServices services(Services{&console, nullptr, nullptr, nullptr});
        ReglagesExport reglages;
        reglages.dossier = std::filesystem::absolute(out).parent_path().string();
        reglages.format = format == "xml" ? 2 : format == "xlsx" ? 3 : 0;
        reglages.apresExport = 2;  // say where the file is, open nothing
        const ResultatExport r = ExporteRapport(
            grille, *rapport, std::to_string(st), *debut, *fin, reglages,
            [&](const std::string&, const std::string&, const std::string&) { return out; });
        TraceLogForce();
        if (r.Ok()) return termine(codeFin);
        if (r.issue == IssueExport::NonEcrase)
            std::fprintf(stderr,
                         "zl3-stats: fichier existant gardé (--overwrite pour le remplacer)\n");
        else if (!r.erreur.empty())
            std::fprintf(stderr, "zl3-stats: %s\n", r.erreur.c_str());
        return termine(1);
    }
    const int code = ecritTexte(grille, codeFin);
    return termine(code);
}
