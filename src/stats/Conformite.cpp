#include "Conformite.h"

#include <algorithm>
#include <map>

#include "DiffusionsMusique.h"
#include "Lib_Config.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Profile.h"
#include "Lib_Public.h"
#include "Services.h"

namespace zl3 {
namespace {

const char* kOrigine = "Conformite:JugeConformite";
constexpr int64_t kSecondesJour = 86400;

int64_t Instant(const DateTime& t) { return InstantDe(t); }
// The same day and time `mois` months later, the day cut to the month's last.
int64_t PlusMois(int64_t instant, int mois) {
    const int64_t j = instant >= 0 ? instant / kSecondesJour : (instant - kSecondesJour + 1) / kSecondesJour;
    const int64_t reste = instant - j * kSecondesJour;
    DateTime d = CivilFromDays(j);
    int m = d.month - 1 + mois;
    d.year += m >= 0 ? m / 12 : (m - 11) / 12;
    m = ((m % 12) + 12) % 12;
    d.month = m + 1;
    d.day = std::min(d.day, DaysInMonth(d.year, d.month));
    return DaysFromCivil(d.year, d.month, d.day) * kSecondesJour + reste;
}

bool PartAtteinte(long long nombre, long long base, int seuil) {
    return nombre * 100 >= static_cast<long long>(seuil) * base;
}

// Smallest count reaching `seuil` percent of `base`.
long long MinimumPour(long long base, int seuil) {
    return (static_cast<long long>(seuil) * base + 99) / 100;
}

std::string Pourcent(long long n, long long base) {
    if (base <= 0) return "";
    const long long dixiemes = (n * 2000 + base) / (2 * base);
    return std::to_string(dixiemes / 10) + "." + std::to_string(dixiemes % 10) + " %";
}

void Juger(VerdictConformite& v, const ReglesConformite& regles) {
    const SeuilsRegime& s = v.seuils;
    v.criteres.clear();
    {
        Critere c;
        c.libelle = "Chansons d'expression française";
        c.nombre = v.francophonesRetenus;
        c.base = v.base;
        c.seuil = s.partFrancophone;
        c.issue = v.base > 0 && PartAtteinte(c.nombre, c.base, c.seuil) ? Issue::Conforme
                                                                        : Issue::NonConforme;
        if (v.base == 0) c.note = "aucune diffusion dans la tranche";
        if (v.retires > 0)
            c.note = std::to_string(v.retires) + " passage(s) retiré(s) par la règle des " +
                     std::to_string(regles.nbTitresRegle) + " titres";
        v.criteres.push_back(c);
    }
    if (s.sousQuota != SousQuota::Aucun) {
        Critere c;
        c.base = v.base;
        c.seuil = s.partSousQuota;
        long long inconnus = 0;
        switch (s.sousQuota) {
            case SousQuota::NouveauxTalents:
                c.libelle = "Nouveaux talents";
                c.nombre = v.nouveauxTalents;
                break;
            case SousQuota::NouvellesProductions:
                c.libelle = "Nouvelles productions";
                c.nombre = v.nouvellesProductions;
                inconnus = v.nouvellesProductionsInconnues;
                break;
            default:
                c.libelle = "Nouveaux talents ou nouvelles productions";
                c.nombre = v.nouveauxTalentsOuProductions;
                inconnus = v.talentsOuProductionsInconnus;
                break;
        }
        if (v.base > 0 && PartAtteinte(c.nombre, c.base, c.seuil))
            c.issue = Issue::Conforme;
        else if (v.base > 0 && inconnus > 0 && PartAtteinte(c.nombre + inconnus, c.base, c.seuil)) {
            c.issue = Issue::Indetermine;
            c.note = std::to_string(inconnus) +
                     " passage(s) dont la nouveauté ne peut être établie (données de la station "
                     "trop récentes ou historique tronqué)";
        } else {
            c.issue = Issue::NonConforme;
        }
        v.criteres.push_back(c);
    }
    if (s.titresMin > 0) {
        Critere c;
        c.libelle = "Titres différents";
        c.nombre = v.titresDistincts;
        c.seuil = s.titresMin;
        c.pourcentage = false;
        c.issue = c.nombre >= c.seuil ? Issue::Conforme : Issue::NonConforme;
        v.criteres.push_back(c);
    }
    if (s.passagesMax > 0) {
        Critere c;
        c.libelle = "Passages du titre le plus diffusé";
        c.nombre = v.passagesTitreMax;
        c.seuil = s.passagesMax;
        c.pourcentage = false;
        c.maximum = true;
        c.issue = c.nombre <= c.seuil ? Issue::Conforme : Issue::NonConforme;
        if (!v.titreMax.empty()) c.note = v.titreMax;
        v.criteres.push_back(c);
    }
    v.issue = Issue::Conforme;
    for (const Critere& c : v.criteres) {
        if (c.issue == Issue::NonConforme) {
            v.issue = Issue::NonConforme;
            break;
        }
        if (c.issue == Issue::Indetermine) v.issue = Issue::Indetermine;
    }
}

}  // namespace

std::string CodeRegime(Regime regime) {
    switch (regime) {
        case Regime::General:
            return "40-20";
        case Regime::Patrimoine:
            return "60-10";
        case Regime::NouveauxTalents:
            return "35-25";
        case Regime::Decouverte:
            return "15";
    }
    return "40-20";
}

std::optional<Regime> RegimeDeCode(const std::string& code) {
    for (Regime r : kRegimes)
        if (CodeRegime(r) == code) return r;
    return std::nullopt;
}

std::string LibelleRegime(Regime regime) {
    switch (regime) {
        case Regime::General:
            return "Général: 40 % dont 20 % de nouveaux talents ou nouvelles productions";
        case Regime::Patrimoine:
            return "Patrimoine: 60 % dont 10 % de nouvelles productions";
        case Regime::NouveauxTalents:
            return "Nouveaux talents: 35 % dont 25 % de nouveaux talents";
        case Regime::Decouverte:
            return "Découverte: 15 %, 1 000 titres, 100 passages au plus par titre";
    }
    return "";
}

Regime RegimeStation(int base, int station) {
    const std::string code =
        ReadProfileString("Conformite", "Regime_" + PadNumber(base, 2) + "_" + PadNumber(station, 2),
                          "", NomFichierSettings("", ".Ini"));
    return RegimeDeCode(Trim(code)).value_or(Regime::General);
}

bool EnregistrerRegimeStation(int base, int station, Regime regime) {
    return WriteProfileString("Conformite",
                              "Regime_" + PadNumber(base, 2) + "_" + PadNumber(station, 2),
                              CodeRegime(regime), NomFichierSettings("", ".Ini"));
}

const char* LibelleIssue(Issue issue) {
    switch (issue) {
        case Issue::Conforme:
            return "Conforme";
        case Issue::NonConforme:
            return "Non conforme";
        case Issue::Indetermine:
            return "Indéterminé";
    }
    return "";
}

std::string NomFichierConformite(int station, int annee, int mois) {
    return "ZL3_Conformite_Station_" + std::to_string(station) + "_" + PadNumber(annee, 4) +
           PadNumber(mois, 2);
}

VerdictConformite JugeConformite(const ParametresConformite& p) {
    VerdictConformite v;
    v.regime = p.regime;
    v.seuils = p.regles.Seuils(p.regime);
    if (p.mois < 1 || p.mois > 12 || p.annee < 2000 || p.annee > 2200) {
        v.erreurs.push_back("Mois incorrect");
        return v;
    }
    v.debut = DateTime{p.annee, p.mois, 1, 0, 0, 0, 0};
    v.fin = DateTime{p.annee, p.mois, DaysInMonth(p.annee, p.mois), 0, 0, 0, 0};
    DateTime maintenant = p.maintenant ? *p.maintenant : Svc().clock ? Svc().clock->Now()
                                                                    : SystemClock().Now();
    const int64_t debutMois = Instant(v.debut);
    const int64_t finMois = debutMois + (DayDiff(v.debut, v.fin) + 1) * kSecondesJour;  // excluded
    const int64_t tMaintenant = Instant(maintenant);
    if (tMaintenant < debutMois) {
        v.erreurs.push_back("Le mois " + PadNumber(p.mois, 2) + "/" + std::to_string(p.annee) +
                            " n'a pas commencé");
        return v;
    }
    v.moisEnCours = tMaintenant < finMois;
    const int64_t limite = v.moisEnCours ? tMaintenant + 1 : finMois;  // excluded
    {
        const int64_t j = (limite - 1) / kSecondesJour;
        v.jugeJusqua = CivilFromDays(j);
        const int64_t r = (limite - 1) - j * kSecondesJour;
        v.jugeJusqua.hour = static_cast<int>(r / 3600);
        v.jugeJusqua.minute = static_cast<int>(r / 60 % 60);
        v.jugeJusqua.second = static_cast<int>(r % 60);
    }

    TraceProc(kOrigine);
    EffaceIncidentsBTrieve();
    DiffusionsMusique lu = LireDiffusionsMusique(p.source, p.station, debutMois, p.arret, kOrigine);
    if (!lu.lisible) {
        v.erreurs.push_back(lu.texteSource);
        return v;
    }
    std::vector<MorceauMusique>& morceaux = lu.morceaux;
    const std::vector<DiffusionMusique>* diffusions = &lu.diffusions;
    v.source = lu.source;
    v.texteSource = lu.texteSource;
    v.morceauxTronques = lu.morceauxTronques;
    const int64_t debutDonnees = lu.debutDonnees;

    // Days of the month.
    const int nbJours = v.fin.day;
    v.jours.resize(static_cast<size_t>(nbJours));
    for (int i = 0; i < nbJours; ++i)
        v.jours[static_cast<size_t>(i)].jour = AddDays(v.debut, i);

    const ReglesConformite& R = p.regles;
    std::map<int, long long> francophonesParTitre;  // band plays that count, by track
    std::map<int, long long> passagesParTitre;
    for (size_t i = 0; i < diffusions->size(); ++i) {
        const DiffusionMusique& d = (*diffusions)[i];
        if (d.instant < debutMois || d.instant >= limite) continue;
        const MorceauMusique& mm = morceaux[static_cast<size_t>(d.morceau)];
        const int64_t jour = (d.instant - debutMois) / kSecondesJour;
        const int minutes = static_cast<int>((d.instant - debutMois) % kSecondesJour / 60);
        const bool weekEnd = DayOfWeek(v.jours[static_cast<size_t>(jour)].jour) >= 6;
        const int debutBande = weekEnd ? R.debutBandeWeekEnd : R.debutBandeSemaine;
        const int finBande = weekEnd ? R.finBandeWeekEnd : R.finBandeSemaine;
        if (minutes < debutBande || minutes > finBande) {
            ++v.horsBande;
            continue;
        }
        // How long it was on air: until the next song started, at most its length.
        if (mm.duree > 0) {
            size_t suivant = i + 1;
            while (suivant < diffusions->size() && (*diffusions)[suivant].instant == d.instant)
                ++suivant;
            int64_t joue = mm.duree;
            if (suivant < diffusions->size())
                joue = std::min<int64_t>(joue, (*diffusions)[suivant].instant - d.instant);
            const bool entier = joue >= mm.duree;
            if (joue < R.dureeMinimale && !entier) {
                ++v.tropCourts;
                continue;
            }
        }
        JourConformite& j = v.jours[static_cast<size_t>(jour)];
        switch (mm.quota) {
            case 'O':
            case '1': {
                ++v.francophones;
                ++francophonesParTitre[d.morceau];
                if (mm.quota == '1') {
                    ++v.nouveauxTalents;
                    ++j.nt;
                } else {
                    ++j.fr;
                }
                // New production: within the months that follow the first broadcast found.
                enum { Non, Oui, Inconnu } nouvelle = Non;
                const int64_t debutFenetre = PlusMois(d.instant, -R.moisNouvelleProduction);
                if (mm.premiere && *mm.premiere > debutFenetre)
                    nouvelle = (mm.premiereIncertaine || debutDonnees > debutFenetre) ? Inconnu
                                                                                       : Oui;
                if (nouvelle == Oui) ++v.nouvellesProductions;
                if (nouvelle == Inconnu) ++v.nouvellesProductionsInconnues;
                if (mm.quota == '1' || nouvelle == Oui)
                    ++v.nouveauxTalentsOuProductions;
                else if (nouvelle == Inconnu)
                    ++v.talentsOuProductionsInconnus;
                break;
            }
            case 'N':
                ++v.etrangers;
                ++j.etr;
                break;
            case '-':
                ++v.instrumentaux;
                ++j.instru;
                break;
            default:
                ++v.nonClasses;
                continue;
        }
        ++passagesParTitre[d.morceau];
    }
    v.base = v.francophones + v.etrangers;
    long long frCumul = 0, baseCumul = 0;
    for (JourConformite& j : v.jours) {
        j.base = j.fr + j.nt + j.etr;
        frCumul += j.fr + j.nt;
        baseCumul += j.base;
        j.frCumul = frCumul;
        j.baseCumul = baseCumul;
    }

    // The ten-title rule.
    std::vector<std::pair<int, long long>> classement(francophonesParTitre.begin(),
                                                      francophonesParTitre.end());
    std::stable_sort(classement.begin(), classement.end(), [&](const auto& a, const auto& b) {
        if (a.second != b.second) return a.second > b.second;
        return morceaux[static_cast<size_t>(a.first)].cle < morceaux[static_cast<size_t>(b.first)].cle;
    });
    if (classement.size() > static_cast<size_t>(R.nbTitresRegle))
        classement.resize(static_cast<size_t>(R.nbTitresRegle));
    v.ligneDixTitres = v.francophones * R.seuilDixTitres / 100;
    long long cumul = 0;
    for (const auto& [m, n] : classement) {
        TitreDixTitres t;
        t.cle = morceaux[static_cast<size_t>(m)].cle;
        t.titre = morceaux[static_cast<size_t>(m)].titre;
        t.passages = n;
        const long long avant = cumul;
        cumul += n;
        t.retires = std::max(0LL, cumul - std::max(avant, v.ligneDixTitres));
        v.retires += t.retires;
        v.dixTitres.push_back(t);
    }
    v.dixTitresPassages = cumul;
    v.francophonesRetenus = v.francophones - v.retires;

    // Discovery counts.
    v.titresDistincts = static_cast<long long>(passagesParTitre.size());
    for (const auto& [m, n] : passagesParTitre)
        if (n > v.passagesTitreMax) {
            v.passagesTitreMax = n;
            v.titreMax = morceaux[static_cast<size_t>(m)].cle + " " +
                         morceaux[static_cast<size_t>(m)].titre;
        }

    Juger(v, R);

    // A month not yet over: the band minutes gone and still to come give the present rate.
    if (v.moisEnCours) {
        long long minutesPassees = 0, minutesMois = 0;
        for (const JourConformite& j : v.jours) {
            const bool weekEnd = DayOfWeek(j.jour) >= 6;
            const int debutBande = weekEnd ? R.debutBandeWeekEnd : R.debutBandeSemaine;
            const int finBande = weekEnd ? R.finBandeWeekEnd : R.finBandeSemaine;
            const long long duree = std::max(0, finBande - debutBande + 1);
            minutesMois += duree;
            const int64_t debutJour = Instant(j.jour);
            const long long ecoulees = (tMaintenant - debutJour) / 60;  // minutes of the day gone
            minutesPassees += std::clamp<long long>(ecoulees - debutBande + 1, 0, duree);
        }
        if (minutesPassees > 0)
            v.baseProjetee = (v.base * minutesMois + minutesPassees - 1) / minutesPassees;
        v.baseProjetee = std::max(v.baseProjetee, v.base);
        v.francophonesNecessaires = MinimumPour(v.baseProjetee, v.seuils.partFrancophone);
        v.francophonesRestants = std::max(0LL, v.francophonesNecessaires - v.francophonesRetenus);
    }

    const auto& incidents = IncidentsBTrieve();
    v.erreurs.insert(v.erreurs.end(), incidents.begin(), incidents.end());
    if (lu.arretee) v.erreurs.push_back("Recherche interrompue");
    v.incomplete = !v.erreurs.empty();
    v.effectue = true;
    TraceLog("Conformite: " + CodeRegime(v.regime) + " " + FormatDDMMYYYY(v.debut) + ": " +
             LibelleIssue(v.issue) + " (" + std::to_string(v.francophonesRetenus) + "/" +
             std::to_string(v.base) + ")");
    return v;
}

std::string TexteVerdict(const VerdictConformite& v) {
    std::string t;
    if (!v.effectue) {
        t = "Conformité: le mois ne peut être jugé";
        for (const std::string& e : v.erreurs)
            t += "\n  " + e;
        return t + "\n";
    }
    t += "Conformité " + PadNumber(v.debut.month, 2) + "/" + std::to_string(v.debut.year) +
         ", régime " + CodeRegime(v.regime) + " (" + LibelleRegime(v.regime) + ")\n";
    if (v.moisEnCours)
        t += "Mois en cours, jugé jusqu'au " + FormatDDMMYYYY(v.jugeJusqua) + " " +
             FormatHHMMSS(v.jugeJusqua) + "\n";
    t += "Source: " + v.texteSource + "\n";
    t += std::string("Verdict: ") + LibelleIssue(v.issue) + "\n";
    for (const Critere& c : v.criteres) {
        t += "  " + c.libelle + ": ";
        if (c.pourcentage) {
            t += std::to_string(c.nombre) + " / " + std::to_string(c.base) + " = " +
                 (c.base > 0 ? Pourcent(c.nombre, c.base) : std::string("-")) + " (seuil " +
                 std::to_string(c.seuil) + " %";
            if (c.base > 0) {
                const long long ecart = c.nombre - MinimumPour(c.base, c.seuil);
                t += ecart >= 0 ? ", marge " + std::to_string(ecart) + " passage(s)"
                                : ", manque " + std::to_string(-ecart) + " passage(s)";
            }
            t += ")";
        } else {
            t += std::to_string(c.nombre) + (c.maximum ? " (au plus " : " (au moins ") +
                 std::to_string(c.seuil) + ")";
        }
        t += std::string(": ") + LibelleIssue(c.issue);
        if (!c.note.empty()) t += " - " + c.note;
        t += "\n";
    }
    t += "Tranche: " + std::to_string(v.francophones) + " francophones (dont " +
         std::to_string(v.nouveauxTalents) + " nouveaux talents, " +
         std::to_string(v.nouvellesProductions) + " nouvelles productions";
    if (v.nouvellesProductionsInconnues > 0)
        t += ", " + std::to_string(v.nouvellesProductionsInconnues) + " indéterminées";
    t += "), " + std::to_string(v.etrangers) + " étrangers, " + std::to_string(v.instrumentaux) +
         " instrumentaux hors base";
    if (v.nonClasses > 0) t += ", " + std::to_string(v.nonClasses) + " sans quota";
    t += "; " + std::to_string(v.tropCourts) + " passage(s) de moins de 2 minutes écartés, " +
         std::to_string(v.horsBande) + " hors tranche\n";
    t += "Règle des dix titres: " + std::to_string(v.dixTitresPassages) + " passages pour " +
         std::to_string(v.dixTitres.size()) + " titres, ligne à " +
         std::to_string(v.ligneDixTitres) + ", " + std::to_string(v.retires) + " retiré(s)\n";
    for (const TitreDixTitres& d : v.dixTitres)
        if (d.retires > 0)
            t += "  " + d.cle + " " + d.titre + ": " + std::to_string(d.passages) +
                 " passages, " + std::to_string(d.retires) + " retiré(s)\n";
    if (v.seuils.titresMin > 0 || v.seuils.passagesMax > 0)
        t += "Titres différents: " + std::to_string(v.titresDistincts) +
             "; titre le plus diffusé: " + std::to_string(v.passagesTitreMax) + " passages\n";
    if (v.moisEnCours)
        t += "Au rythme actuel: " + std::to_string(v.baseProjetee) +
             " passages dans la tranche d'ici la fin du mois, dont " +
             std::to_string(v.francophonesNecessaires) + " francophones nécessaires: encore " +
             std::to_string(v.francophonesRestants) + " à diffuser\n";
    if (!v.morceauxTronques.empty()) {
        t += "Historiques tronqués:\n";
        for (const std::string& m : v.morceauxTronques)
            t += "  " + m + "\n";
    }
    if (v.incomplete) {
        t += "Rapport incomplet:\n";
        for (const std::string& e : v.erreurs)
            t += "  " + e + "\n";
    }
    return t;
}

void RemplirGrilleConformite(const VerdictConformite& v, Grid& g) {
    g = Grid(7, 0);
    const char* entetes[] = {"Libellé", "Nombre", "Base", "Part", "Seuil", "Verdict",
                             "Part cumulée"};
    for (int c = 1; c <= 7; ++c)
        g.SetColHeader(0, c, entetes[c - 1]);
    g.SetColHeader(0, 0, "");
    g.SetGenre(2, GenreColonne::Nombre);
    g.SetGenre(3, GenreColonne::Nombre);
    g.SetGenre(4, GenreColonne::Pourcentage);
    g.SetGenre(7, GenreColonne::Pourcentage);
    g.SetColWidth(1, 40);
    // Percentages as the grids show them ("43.5 %"), so the spreadsheets store numbers.
    auto pct = [](long long n, long long base) {
        if (base <= 0) return std::string();
        const long long dixiemes = (n * 2000 + base) / (2 * base);
        return std::to_string(dixiemes / 10) + "." + std::to_string(dixiemes % 10) + " %";
    };
    auto ligne = [&](const std::string& entete, const std::string& libelle,
                     const std::string& nombre, const std::string& base, const std::string& part,
                     const std::string& seuil, const std::string& verdict,
                     const std::string& cumul = "") {
        const int r = g.MaxRows() + 1;
        g.SetMaxRows(r);
        g.SetRowHeader(0, r, entete);
        g.SetText(1, r, libelle);
        g.SetText(2, r, nombre);
        g.SetText(3, r, base);
        g.SetText(4, r, part);
        g.SetText(5, r, seuil);
        g.SetText(6, r, verdict);
        g.SetText(7, r, cumul);
    };
    if (!v.effectue) {
        for (const std::string& e : v.erreurs)
            ligne("", e, "", "", "", "", "");
        return;
    }
    const std::string mois = PadNumber(v.debut.month, 2) + "/" + std::to_string(v.debut.year);
    ligne("Mois", mois + (v.moisEnCours ? " (en cours)" : ""), "", "", "", "",
          LibelleIssue(v.issue));
    ligne("Régime", CodeRegime(v.regime) + " " + LibelleRegime(v.regime), "", "", "", "", "");
    ligne("Source", v.texteSource, "", "", "", "", "");
    for (const Critere& c : v.criteres)
        ligne("Critère", c.libelle + (c.note.empty() ? "" : " (" + c.note + ")"),
              std::to_string(c.nombre), c.pourcentage ? std::to_string(c.base) : "",
              c.pourcentage ? pct(c.nombre, c.base) : "",
              c.pourcentage ? std::to_string(c.seuil) + " %"
                            : (c.maximum ? "<= " : ">= ") + std::to_string(c.seuil),
              LibelleIssue(c.issue));
    ligne("Compte", "Francophones avant la règle des dix titres", std::to_string(v.francophones),
          std::to_string(v.base), pct(v.francophones, v.base), "", "");
    ligne("Compte", "Nouveaux talents", std::to_string(v.nouveauxTalents), std::to_string(v.base),
          pct(v.nouveauxTalents, v.base), "", "");
    ligne("Compte", "Nouvelles productions", std::to_string(v.nouvellesProductions),
          std::to_string(v.base), pct(v.nouvellesProductions, v.base), "", "");
    if (v.nouvellesProductionsInconnues > 0)
        ligne("Compte", "Nouveauté indéterminable", std::to_string(v.nouvellesProductionsInconnues),
              "", "", "", "");
    ligne("Compte", "Etrangers", std::to_string(v.etrangers), std::to_string(v.base),
          pct(v.etrangers, v.base), "", "");
    ligne("Compte", "Instrumentaux (hors base)", std::to_string(v.instrumentaux), "", "", "", "");
    ligne("Compte", "Passages de moins de 2 minutes (écartés)", std::to_string(v.tropCourts), "",
          "", "", "");
    ligne("Compte", "Titres différents", std::to_string(v.titresDistincts), "", "", "", "");
    ligne("Dix titres", "Passages des dix titres les plus diffusés (ligne " +
                            std::to_string(v.ligneDixTitres) + ")",
          std::to_string(v.dixTitresPassages), std::to_string(v.francophones),
          pct(v.dixTitresPassages, v.francophones), "", "");
    for (const TitreDixTitres& d : v.dixTitres)
        ligne("Dix titres", d.cle + " " + d.titre, std::to_string(d.passages), "", "", "",
              d.retires > 0 ? std::to_string(d.retires) + " retiré(s)" : "");
    if (v.moisEnCours) {
        ligne("Projection", "Base attendue en fin de mois au rythme actuel",
              std::to_string(v.baseProjetee), "", "", "", "");
        ligne("Projection", "Francophones encore nécessaires", std::to_string(v.francophonesRestants),
              "", "", std::to_string(v.seuils.partFrancophone) + " %", "");
    }
    for (const std::string& m : v.morceauxTronques)
        ligne("Tronqué", m, "", "", "", "", "");
    for (const JourConformite& j : v.jours)
        ligne(FormatDDMMYYYY(j.jour, '-'), ShortDayName(j.jour), std::to_string(j.fr + j.nt),
              std::to_string(j.base), pct(j.fr + j.nt, j.base),
              std::to_string(v.seuils.partFrancophone) + " %", "", pct(j.frCumul, j.baseCumul));
    if (v.incomplete) g.SetWarning("Rapport incomplet");
}

}  // namespace zl3
