// Quota compliance: a station's month judged as the broadcasting regulator judges it, beside the
// Quotas report (which keeps its own counting, its 08:30 weekend start included).
//
// What is counted:
//   - the music tracks ("000" to "999"), each broadcast of the month inside the significant
//     listening hours: 06:30–22:30 Monday to Friday, 08:00–22:30 Saturday and Sunday (minutes,
//     seconds ignored, both ends inclusive);
//   - only broadcasts of at least 2 minutes, or of a shorter track played whole. How long a
//     broadcast lasted is read from the air: until the next song started, at most the track's
//     length (the last song known is taken as played whole; a track without a length too);
//   - French-language = "O" (French) and "1" (new talent); the base is French-language plus
//     "N" (foreign); "-" (instrumental) and any other flag stay out of the base;
//   - new talent: the flag "1"; new production: a title during the 9 months that follow its first
//     broadcast found in the station's data. When the data does not reach back far enough to
//     tell (it begins less than 9 months before the broadcast, or a capped history hides the
//     older broadcasts) the broadcast's class is unknown and a regime that needs it is said
//     "indéterminé" rather than guessed;
//   - the ten-title rule: the plays of the ten most played French-language titles beyond 50 % of
//     all French-language plays stop counting: they leave the French count, not the base. The
//     plays cut are taken from the titles in order of plays, most played first, beyond the line;
//   - the discovery regime's title counts (distinct titles, plays of the most played title) are
//     taken inside the band too.
//
// Where the broadcasts come from: the music events actually aired (FRAD028, one record per
// broadcast) when the station's file covers the month from its first day; otherwise the history
// records (FRAD047), whose 672 entries per track can drop broadcasts of the busiest tracks: those
// tracks are listed either way.
//
// Every number of the regulator is a setting (ReglesConformite) with the regulator's value as its
// default.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "DateTime.h"
#include "DiffusionsMusique.h"
#include "Grid.h"

namespace zl3 {

enum class Regime { General, Patrimoine, NouveauxTalents, Decouverte };
inline constexpr std::array<Regime, 4> kRegimes = {Regime::General, Regime::Patrimoine,
                                                   Regime::NouveauxTalents, Regime::Decouverte};

// "40-20", "60-10", "35-25", "15".
std::string CodeRegime(Regime regime);
std::optional<Regime> RegimeDeCode(const std::string& code);
// "Général: 40 % dont 20 % …", …
std::string LibelleRegime(Regime regime);

// The regime of a station, kept in the tool's settings file (NomFichierSettings("", ".Ini")),
// section "Conformite", key "Regime_" base "_" station (two digits each), value the regime's
// code; "40-20" when the key is missing or holds another text.
Regime RegimeStation(int base, int station);
bool EnregistrerRegimeStation(int base, int station, Regime regime);

// What the sub-quota of a regime counts, among the French-language plays.
enum class SousQuota { Aucun, NouveauxTalentsOuProductions, NouvellesProductions, NouveauxTalents };

struct SeuilsRegime {
    int partFrancophone = 40;  // percent of the base
    SousQuota sousQuota = SousQuota::Aucun;
    int partSousQuota = 0;     // percent of the base
    int titresMin = 0;         // distinct titles in the month, 0: no such rule
    int passagesMax = 0;       // plays of one title in the month, 0: no such rule
};

struct ReglesConformite {
    // The band, in minutes of the day.
    int debutBandeSemaine = 6 * 60 + 30;
    int finBandeSemaine = 22 * 60 + 30;
    int debutBandeWeekEnd = 8 * 60;
    int finBandeWeekEnd = 22 * 60 + 30;
    int nbTitresRegle = 10;    // the ten-title rule's titles …
    int seuilDixTitres = 50;   // … and their share of the French-language plays, percent
    int dureeMinimale = 120;   // seconds a broadcast must last (or the whole track)
    int moisNouvelleProduction = 9;
    std::array<SeuilsRegime, 4> regimes = {{
        {40, SousQuota::NouveauxTalentsOuProductions, 20, 0, 0},
        {60, SousQuota::NouvellesProductions, 10, 0, 0},
        {35, SousQuota::NouveauxTalents, 25, 0, 0},
        {15, SousQuota::Aucun, 0, 1000, 100},
    }};
    const SeuilsRegime& Seuils(Regime r) const { return regimes[static_cast<size_t>(r)]; }
};

enum class Issue { Conforme, NonConforme, Indetermine };
// "Conforme", "Non conforme", "Indéterminé".
const char* LibelleIssue(Issue issue);

// One criterion of a regime: a share of the base (pourcentage) or a count against its limit.
struct Critere {
    std::string libelle;
    long long nombre = 0;
    long long base = 0;        // share: the base; count: 0
    int seuil = 0;             // percent, or the count limit
    bool pourcentage = true;
    bool maximum = false;      // the count must not exceed the limit (else: reach it)
    Issue issue = Issue::Conforme;
    std::string note;          // why it is undetermined, …
};

struct JourConformite {
    DateTime jour;
    long long fr = 0, nt = 0, etr = 0, instru = 0;  // band, plays that count
    long long base = 0;                              // fr + nt + etr
    long long frCumul = 0, baseCumul = 0;            // from the 1st of the month to this day
};

// A title of the ten-title rule: its French-language plays and those the rule cut.
struct TitreDixTitres {
    std::string cle;
    std::string titre;
    long long passages = 0;
    long long retires = 0;
};

struct ParametresConformite {
    int annee = 0;
    int mois = 0;     // 1..12
    int base = 1;     // 1-based, for the station's regime setting
    int station = 1;  // 1-based
    int source = 0;   // caller slot; the track, history and events files are opened when not open
    Regime regime = Regime::General;
    ReglesConformite regles;
    // The moment the judgement is made: a month not yet over is judged up to it; its days after
    // it are empty. Taken from the clock service when not given.
    std::optional<DateTime> maintenant;
    // Asked every 20 tracks and every 1000 events after a yield to the event loop: true stops
    // (the verdict is then marked incomplete).
    std::function<bool()> arret;
};

struct VerdictConformite {
    Regime regime = Regime::General;
    SeuilsRegime seuils;
    DateTime debut, fin;       // first and last day of the month
    bool effectue = false;     // false: the month could not be judged (see erreurs)
    bool moisEnCours = false;  // the month is not over: judged up to `jugeJusqua`
    DateTime jugeJusqua;
    SourceComptage source = SourceComptage::Historique;
    std::string texteSource;   // which source and why, in the user's words
    // Tracks whose history holds more broadcasts than it keeps and whose oldest entry kept is
    // after the month's first day: with the history as source, broadcasts of the month may be
    // missing. "key title (N passages, K lus)".
    std::vector<std::string> morceauxTronques;

    // Band, plays that count (2 minutes or whole).
    long long francophones = 0;       // French-language, before the ten-title rule
    long long francophonesRetenus = 0;
    long long nouveauxTalents = 0;
    long long nouvellesProductions = 0;          // French-language, certainly new productions
    long long nouvellesProductionsInconnues = 0; // French-language, class unknown
    long long nouveauxTalentsOuProductions = 0;  // certain; + the unknown ones not new talents
    long long talentsOuProductionsInconnus = 0;
    long long etrangers = 0;
    long long base = 0;
    long long instrumentaux = 0;
    long long nonClasses = 0;  // tracks with another flag: out of the base
    long long tropCourts = 0;  // band plays of a music track left out (under 2 minutes)
    long long horsBande = 0;   // plays of the month outside the band

    // The ten-title rule.
    long long dixTitresPassages = 0;  // plays of the ten most played French-language titles
    long long ligneDixTitres = 0;     // the most of them that count
    long long retires = 0;            // plays cut
    std::vector<TitreDixTitres> dixTitres;

    // Discovery counts.
    long long titresDistincts = 0;
    long long passagesTitreMax = 0;
    std::string titreMax;

    std::vector<Critere> criteres;
    Issue issue = Issue::Indetermine;

    // A month not yet over: at the present rate of band plays, the base expected by the end of
    // the month, the French-language plays it needs and those still to air.
    long long baseProjetee = 0;
    long long francophonesNecessaires = 0;
    long long francophonesRestants = 0;

    std::vector<JourConformite> jours;

    bool incomplete = false;  // read errors or a stop: the counts are those read
    std::vector<std::string> erreurs;
};

// Judges the month of `p` from the station's data. Never throws; a month that cannot be judged
// (a bad month, a month still to come, files missing) has `effectue` false and says why in
// `erreurs`.
VerdictConformite JugeConformite(const ParametresConformite& p);

// The verdict in lines of text, for a terminal and the window's summary.
std::string TexteVerdict(const VerdictConformite& v);

// The verdict as a grid for the writers (table, CSV, spreadsheets, XML, print): columns
// "Libellé", "Nombre", "Base", "Part", "Seuil", "Verdict", "Part cumulée"; the criteria, the
// counts, the titles the ten-title rule cut, then one row per day of the month with its band
// share and the running share.
void RemplirGrilleConformite(const VerdictConformite& v, Grid& grille);

// The default file name of the compliance report: "ZL3_Conformite_Station_" station "_" yyyyMM.
std::string NomFichierConformite(int station, int annee, int mois);

}  // namespace zl3
