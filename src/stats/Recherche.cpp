#include "Recherche.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <set>
#include <unordered_map>
#include <vector>

#include "Cp1252.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Stats.h"
#include "Services.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3 {
namespace {

// A string once: every database call takes it.
const std::string kOrigine = "Frm_Main:CommandLancer_Click";

// Quota class of a track's flag: the column in the whole-day block, 0 when not counted.
int ClasseQuota(char flag) {
    switch (flag) {
        case 'O':
            return kColFr;
        case '1':
            return kColNT;
        case 'N':
            return kColEtr;
        case '-':
            return kColInstru;
        default:
            return 0;
    }
}

// The broadcast entries of a period, decoded on integers. An entry is first placed by its year,
// month and day packed into one number: most entries of a history record lie outside the period
// asked and stop there. One inside is then checked to be a real time of a real date, as
// DecodePassage checks it (an entry that is not one is skipped, wherever it falls); the day of a
// packed date is read from a table made once for the period.
class PeriodePassages {
  public:
    PeriodePassages(const DateTime& debut, const DateTime& fin)
        : jourDebut_(DaysFromCivil(debut.year, debut.month, debut.day)),
          packeDebut_(
              std::max(Packe(debut.year - rec::kPremiereAnneePassage, debut.month, debut.day),
                       Packe(0, 1, 1))),
          packeFin_(std::min(Packe(fin.year - rec::kPremiereAnneePassage, fin.month, fin.day),
                             Packe(kAnneeMax, 12, 31))) {
        // An entry's year is one byte: the table never goes past the last year it can hold.
        if (packeFin_ < packeDebut_) return;
        jours_.assign(static_cast<size_t>(packeFin_ - packeDebut_ + 1), -1);
        const int64_t jourFin = DaysFromCivil(fin.year, fin.month, fin.day);
        for (int a = (packeDebut_ >> 9); a <= (packeFin_ >> 9); ++a)
            for (int mo = 1; mo <= 12; ++mo)
                for (int j = 1; j <= DaysInMonth(rec::kPremiereAnneePassage + a, mo); ++j) {
                    const int pk = Packe(a, mo, j);
                    if (pk < packeDebut_ || pk > packeFin_) continue;
                    const int64_t jour = DaysFromCivil(rec::kPremiereAnneePassage + a, mo, j);
                    if (jour < jourDebut_ || jour > jourFin) continue;
                    int64_t semaine = (jour + 3) % 7;  // 0 Monday … 6 Sunday (1970-01-01: Thursday)
                    if (semaine < 0) semaine += 7;
                    jours_[static_cast<size_t>(pk - packeDebut_)] =
                        static_cast<int32_t>((jour - jourDebut_) * 2 + (semaine >= 5 ? 1 : 0));
                }
    }

    // The 6 bytes at `e`: true when they are a valid time of a day of the period, with the
    // day's rank in the period (0 for its first day), whether it is a Saturday or a Sunday, and
    // the minute of the day.
    bool Dans(const uint8_t* e, int& rang, bool& weekEnd, int& minutes) const {
        const int a = e[0] - kZero, mo = e[1] - kZero, j = e[2] - kZero;
        const int p = Packe(a, mo, j);
        if (p < packeDebut_ || p > packeFin_) return false;
        const int h = e[3] - kZero, mi = e[4] - kZero, s = e[5] - kZero;
        // A month of 1 to 12 and a day of 1 to 31 give one packed number per date.
        if (static_cast<unsigned>(mo - 1) > 11u || static_cast<unsigned>(j - 1) > 30u ||
            static_cast<unsigned>(h) > 23u || static_cast<unsigned>(mi) > 59u ||
            static_cast<unsigned>(s) > 59u)
            return false;
        const int32_t jour = jours_[static_cast<size_t>(p - packeDebut_)];
        if (jour < 0) return false;  // not a date (31 April), or not in the period
        rang = jour >> 1;
        weekEnd = (jour & 1) != 0;
        minutes = h * 60 + mi;
        return true;
    }

  private:
    static constexpr int kZero = 32;  // code of the character that stands for 0
    static constexpr int kAnneeMax = 255 - kZero;
    // Keeps the order of real dates (month below 16, day below 32).
    static int Packe(int a, int mo, int j) { return (a * 16 + mo) * 32 + j; }
    int64_t jourDebut_;
    int packeDebut_, packeFin_;
    std::vector<int32_t> jours_;  // by packed date: rank × 2 + week-end, or -1
};

// The three running totals of the advertising lines (client, message, line: columns 8 to 10),
// kept as integers while the walk runs and written as the cells' texts (a total never counted
// stays empty). Only the totals counted since the last writing are written again.
class ComptesPub {
  public:
    explicit ComptesPub(Grid& grille) : grille_(grille) {}

    void Ajouter(int col, int row) {
        if (static_cast<size_t>(row) >= comptes_.size()) {
            comptes_.resize(static_cast<size_t>(row) + 1);
            sale_.resize(comptes_.size());
        }
        const auto i = static_cast<size_t>(col - kPubTotalClient);
        ++comptes_[static_cast<size_t>(row)][i];
        char& sale = sale_[static_cast<size_t>(row)][i];
        if (!sale) {
            sale = 1;
            sales_.emplace_back(row, static_cast<int>(i));
        }
    }
    void Ecrire() {
        for (const auto& [row, i] : sales_) {
            grille_.SetText(
                kPubTotalClient + i, row,
                std::to_string(comptes_[static_cast<size_t>(row)][static_cast<size_t>(i)]));
            sale_[static_cast<size_t>(row)][static_cast<size_t>(i)] = 0;
        }
        sales_.clear();
    }

  private:
    Grid& grille_;
    std::vector<std::array<long long, 3>> comptes_;
    std::vector<std::array<char, 3>> sale_;
    std::vector<std::pair<int, int>> sales_;  // row, total
};

// The counts of the Quotas grid's day rows, kept as integers while the walk runs and written as
// the cells' texts (a cell never counted stays empty, as a cell the count never reached). A
// writing writes again only the cells whose count changed since the previous one.
class ComptesQuotas {
  public:
    ComptesQuotas(Grid& grille, int jours)
        : grille_(grille),
          comptes_((static_cast<size_t>(jours) + 1) * kLargeur),
          ecrits_(comptes_.size()) {}

    void Ajouter(int col, int row) {
        ++comptes_[static_cast<size_t>(row) * kLargeur + static_cast<size_t>(col)];
    }
    void Ecrire() {
        for (size_t i = 0; i < comptes_.size(); ++i) {
            if (comptes_[i] == ecrits_[i]) continue;
            grille_.SetText(static_cast<int>(i % kLargeur), static_cast<int>(i / kLargeur),
                            std::to_string(comptes_[i]));
            ecrits_[i] = comptes_[i];
        }
    }

  private:
    static constexpr size_t kLargeur = kColInstru + kDecalageBande + 1;  // columns 0 to 14
    Grid& grille_;
    std::vector<long long> comptes_;
    std::vector<long long> ecrits_;  // the counts as the grid shows them
};

std::string TexteBrut(std::span<const uint8_t> r, const rec::Field& f) {
    return rec::GetBytes(r, f);
}

// A track of a per-track report ("Top Diffusion", "SACEM").
struct LigneMorceau {
    std::string cle;
    std::string titre;
    std::string artiste1;
    std::string artiste2;
    std::string artistes;
    std::string categorie;
    std::string duree;
    std::string clip;
    std::string label;
    long nombre = 0;
};

// What a per-track report shows of the track whose record is in the track buffer.
LigneMorceau DescriptionMorceau(int source, int station) {
    namespace m = rec::Morceau;
    const auto r = TamponEnreg(kFichierMorceaux);
    LigneMorceau l;
    l.cle = Trim(TexteBrut(r, m::CleMorceau));
    l.titre = Trim(rec::GetText(r, m::Titre));
    const std::string code1 = TexteBrut(r, m::CodeArtiste1);
    const std::string code2 = TexteBrut(r, m::CodeArtiste2);
    const std::string duree = Trim(TexteBrut(r, m::Duree));
    const std::string clip = Trim(TexteBrut(r, m::Clip));
    const std::string label = Trim(TexteBrut(r, m::CodeLabel));
    l.categorie = LibCategorie(source, station, TexteBrut(r, m::CodeCategorie));
    l.artiste1 = Trim(LibArtiste(source, station, code1, "", true));
    l.artiste2 = Trim(code2).empty() ? "" : Trim(LibArtiste(source, station, code2, "", true));
    // Both artists as LibArtiste joins them, from the two names already looked up.
    if (!Trim(code2).empty())
        l.artistes = Trim(l.artiste1 + " + " + l.artiste2);
    else
        l.artistes = l.artiste1;
    long secondes = 0;
    for (char c : duree) {
        if (c < '0' || c > '9') break;
        secondes = secondes * 10 + (c - '0');
    }
    l.duree = duree.empty() ? "" : Tps2MinSec(secondes);
    l.clip = (clip == "O" || clip == "1") ? "Oui" : "";
    l.label = LibLabel(source, station, label);
    return l;
}

bool CommenceParSansCasse(const std::string& texte, const std::string& debut) {
    if (texte.size() < debut.size()) return false;
    for (size_t i = 0; i < debut.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(texte[i])) !=
            std::toupper(static_cast<unsigned char>(debut[i])))
            return false;
    return true;
}

// What a new line of the advertising report shows beside the log record's own fields: the
// message text with its spot number (FRAD026), the salesperson who sold the contract (FRAD005,
// then FRAD001). Looked up once per line, when the line is created.
struct DescriptionPub {
    std::string texteMessage;
    std::string codeCommercial;
    std::string nomCommercial;
};

DescriptionPub DecrireLignePub(const ParametresRecherche& p, const std::string& cleMessage,
                               const std::string& noContrat) {
    namespace mp = rec::MessagePub;
    namespace ec = rec::EnteteContrat;
    namespace cm = rec::Commercial;
    DescriptionPub d;
    // The message: its spot number and text.
    std::string cleM = cleMessage;
    d.texteMessage = "Message: " + Trim(Cp1252ToUtf8(cleMessage));
    BTRieve(p.source, kBtrGetEqual, cleM, 0, kFichierMessages, p.station, kOrigine);
    if (StatutBTrieve == 0) {
        const auto msg = TamponEnreg(kFichierMessages);
        d.texteMessage = PadNumber(PubNoSpot(TexteBrut(msg, mp::NoSpot)), 4) + " " +
                         Trim(rec::GetText(msg, mp::TexteMessage));
    } else if (StatutBTrieve != 4) {
        ErreurBTrieve(p.source, kFichierMessages, cleM, kOrigine, p.station);
    }
    // The contract tells who sold it: the salesperson's code.
    std::string cleC = noContrat;
    BTRieve(p.source, kBtrGetGreaterOrEqual, cleC, 2, kFichierContrats, p.station, kOrigine);
    if (StatutBTrieve == 0) {
        const auto contrat = TamponEnreg(kFichierContrats);
        if (TexteBrut(contrat, ec::NoContrat) == noContrat)
            d.codeCommercial = Trim(rec::GetText(contrat, ec::CodeCommercial));
    } else if (StatutBTrieve != 9 && StatutBTrieve != 4) {
        ErreurBTrieve(p.source, kFichierContrats, cleC, kOrigine, p.station);
    }
    d.nomCommercial = "Commercial: " + d.codeCommercial;
    if (!d.codeCommercial.empty()) {
        std::string cleCo = Calibre(d.codeCommercial, static_cast<int>(cm::CodeCommercial.length));
        BTRieve(p.source, kBtrGetEqual, cleCo, 0, kFichierCommerciaux, p.station, kOrigine);
        if (StatutBTrieve == 0)
            d.nomCommercial =
                Trim(rec::GetText(TamponEnreg(kFichierCommerciaux), cm::NomCommercial));
        else if (StatutBTrieve != 4)
            ErreurBTrieve(p.source, kFichierCommerciaux, cleCo, kOrigine, p.station);
    }
    return d;
}

}  // namespace

std::string TextePourcentage(long long count, long long base) {
    if (base == 0) return {};
    // Tenths of a percent, a half rounded away from zero as the suite's number format does
    // (1 of 16 is 6.25 %, shown "6.3 %"): computed on integers, where a half is exact.
    const bool negatif = (count < 0) != (base < 0);
    const unsigned long long n = static_cast<unsigned long long>(count < 0 ? -count : count);
    const unsigned long long b = static_cast<unsigned long long>(base < 0 ? -base : base);
    const unsigned long long dixiemes = (n * 2000ULL + b) / (2ULL * b);
    const std::string texte = std::to_string(dixiemes / 10) + "." + std::to_string(dixiemes % 10);
    return (negatif && dixiemes != 0 ? "-" : "") + texte + " %";
}

void TotauxEtPourcentages(Grid& g) {
    const int total = g.MaxRows();
    if (total < 1) return;
    for (int bloc = 0; bloc < 2; ++bloc) {
        const int d = bloc * kDecalageBande;
        for (int c = kColFr; c <= kColInstru; ++c) {
            long long somme = 0;
            for (int row = 1; row < total; ++row)
                somme += g.Number(c + d, row);
            g.SetText(c + d, total, std::to_string(somme));
        }
        for (int row = 1; row <= total; ++row) {
            const long long fr = g.Number(kColFr + d, row);
            const long long nt = g.Number(kColNT + d, row);
            const long long frnt = g.Number(kColFrNT + d, row);
            const long long etr = g.Number(kColEtr + d, row);
            const long long base = fr + nt + etr;
            if (base <= 0) continue;  // instrumentals only, or nothing: empty percentages
            g.SetText(kColPctFr + d, row, TextePourcentage(fr, base));
            g.SetText(kColPctNT + d, row, TextePourcentage(nt, base));
            g.SetText(kColPctFrNT + d, row, TextePourcentage(frnt, base));
            g.SetText(kColPctEtr + d, row, TextePourcentage(etr, base));
        }
    }
}

void OuvrirFichiersRecherche(int source, int premiere, int derniere) {
    for (int f : kFichiersRecherche)
        FichierPervasiveOuvrir(source, premiere, derniere, f, f == kFichierInfosMorceaux ? 0 : -2);
    TraceLog("Pervasive files opened");
}

void FermerFichiersRecherche(int source, int premiere, int derniere) {
    for (int f : kFichiersRecherche)
        FichierPervasiveFermer(source, premiere, derniere, f);
    TraceLog("Pervasive files closed");
}

RechercheStats::RechercheStats(TableursMusique& musique, Grid& publicite)
    : musique_(musique), publicite_(publicite) {}

void RechercheStats::DefinirCaption(const std::string& caption) {
    caption_ = caption;
    if (onCaption) onCaption(caption);
}

void RechercheStats::Attendre(int fichier) {
    if (!Svc().events) return;
    // The counts so far are written into the grid for the window to repaint, at most every
    // kIntervalleAffichageMs: writing them at every yield would cost more than the walk.
    if (avantAttente_) {
        const int64_t maintenant = Svc().clock->Stopwatch();
        if (!affichageFait_ || maintenant - dernierAffichage_ >= kIntervalleAffichageMs) {
            avantAttente_();
            affichageFait_ = true;
            dernierAffichage_ = maintenant;
        }
    }
    const auto tampon = TamponEnreg(fichier);
    sauvegarde_.assign(tampon.begin(), tampon.end());
    Svc().events->DoEvents();
    std::copy(sauvegarde_.begin(), sauvegarde_.end(), tampon.begin());
}

std::string TexteRapportIncomplet(const std::vector<std::string>& erreurs) {
    std::string texte = "Rapport incomplet: erreur de lecture de la base";
    for (const std::string& e : erreurs)
        texte += "\n  " + e;
    return texte;
}

void RechercheStats::CommandLancer_Click(const ParametresRecherche& p) {
    TraceProc(kOrigine);
    if (enCours_) {
        if (Question("Voulez-vous stopper la recherche ?", kTitreApplication,
                     kMbYesNo | kMbQuestion) == kIdYes)
            arret_ = true;
        return;
    }
    const auto rapport = p.rapport;
    enCours_ = true;
    arret_ = false;
    affichageFait_ = false;
    bilan_ = BilanRecherche{};
    DefinirCaption("Stopper");
    EffaceIncidentsBTrieve();
    try {
        if (rapport == Rapport::Publicite)
            RecherchePublicite(p);
        else
            RechercheMusique(p, rapport);
        bilan_.effectuee = true;
    } catch (const std::exception& e) {
        TraceErreur(kOrigine, 0, e.what());
        bilan_.erreurs.push_back(std::string("Erreur: ") + e.what());
    }
    // Any status reported on the way means that part of the period was not read.
    const auto& incidents = IncidentsBTrieve();
    bilan_.erreurs.insert(bilan_.erreurs.end(), incidents.begin(), incidents.end());
    bilan_.incomplete = !bilan_.erreurs.empty();
    std::string avertissement;
    if (bilan_.incomplete) {
        avertissement = TexteRapportIncomplet(bilan_.erreurs);
        TraceLog(avertissement);
    }
    GrilleDuRapport(musique_, publicite_, rapport).SetWarning(avertissement);
    bilan_.arretee = arret_;
    enCours_ = false;
    DefinirCaption("Lancer");
}

std::string RechercheStats::ListeCategoriesTop(const ParametresRecherche& p) {
    namespace c = rec::Categorie;
    std::string liste;
    std::string cle = "CAT_2";
    int16_t op = kBtrGetGreaterOrEqual;
    for (;;) {
        BTRieve(p.source, op, cle, 1, kFichierAttributs, p.station, kOrigine);
        op = kBtrGetNext;
        if (StatutBTrieve != 0) {
            if (StatutBTrieve != 9)
                ErreurBTrieve(p.source, kFichierAttributs, cle, kOrigine, p.station);
            break;
        }
        if (!CommenceParSansCasse(cle, "CAT_2")) break;
        const auto r = TamponEnreg(kFichierAttributs);
        if (TexteBrut(r, c::Parametres).find("OY") != std::string::npos)
            liste += Trim(TexteBrut(r, c::CodeAttribut)) + ",";
    }
    TraceLog("Top Diffusion: categories: " + liste);
    return liste;
}

void RechercheStats::RechercheMusique(const ParametresRecherche& p, Rapport rapport) {
    namespace m = rec::Morceau;
    namespace h = rec::HistoriqueDiffusion;
    if (!Versions().charge) InitGeneralVersionSons(p.source, p.station);

    // The grid of the report, emptied and sized for the period.
    const int64_t nbJours = DayDiff(p.debut, p.fin) + 1;
    Grid& quotas = musique_.quotas;
    Grid& grille = GrilleDuRapport(musique_, publicite_, rapport);
    grille.ClearData();
    grille.SetMaxRows(0);
    int joursCrees = 0;  // day rows 1..joursCrees carry their date
    if (rapport == Rapport::Quotas) {
        if (nbJours < 1) return;
        quotas.SetMaxRows(static_cast<int>(nbJours) + 1);
        for (int i = 1; i <= nbJours; ++i) {
            if (arret_) break;
            const DateTime jour = AddDays(p.debut, i - 1);
            quotas.SetRowHeader(0, i, FormatDDMMYYYY(jour, '-'));
            quotas.SetRowHeader(1, i, ShortDayName(jour));
            joursCrees = i;
        }
        quotas.SetRowHeader(0, quotas.MaxRows(), "Total");
    }
    // Broadcast entries are compared as day numbers and minutes of the day: row i holds the
    // day debut + i - 1, as its header says.
    const PeriodePassages periode(p.debut, p.fin);
    ComptesQuotas comptesQuotas(quotas, joursCrees);
    // What the event loop may show of the grid is written before each yield.
    struct AvantAttente {
        std::function<void()>& f;
        ~AvantAttente() { f = nullptr; }
    } avantAttente{avantAttente_};
    if (rapport == Rapport::Quotas) avantAttente_ = [&comptesQuotas] { comptesQuotas.Ecrire(); };
    constexpr int kDebutBandeSemaine = 6 * 60 + 30;
    constexpr int kDebutBandeWeekEnd = 8 * 60 + 30;
    constexpr int kFinBande = 22 * 60 + 30;

    std::string categoriesTop;
    if (rapport == Rapport::TopDiffusion) categoriesTop = "," + ListeCategoriesTop(p);
    std::set<std::string> principaux;
    if (p.regrouperVersions)
        for (const auto& [version, principal] : Versions().principal)
            principaux.insert(principal);
    std::map<std::string, LigneMorceau> lignes;
    std::map<std::string, LigneMorceau> descriptionsPrincipales;

    const std::string basse = "000" + std::string(5, '\0');
    const std::string haute = "999" + std::string(5, '\xFF');
    std::string cle = basse;
    // The track's key and its history key, rewritten in place for each track.
    std::string cleMorceau(m::CleMorceau.length, ' ');
    const std::string modeleCleH = rec::HistoryKey("");
    std::string cleH = modeleCleH;
    constexpr size_t kLongueurCle = m::CleMorceau.length;
    int16_t op = kBtrGetGreaterOrEqual;
    int n = 0;
    for (;;) {
        BTRieve(p.source, op, cle, 0, kFichierMorceaux, p.station, kOrigine);
        op = kBtrGetNext;
        if (StatutBTrieve != 0) {
            if (StatutBTrieve != 9)
                ErreurBTrieve(p.source, kFichierMorceaux, cle, kOrigine, p.station);
            break;
        }
        if (cle > haute) break;
        ++bilan_.morceauxLus;
        if (++n % 20 == 0) Attendre(kFichierMorceaux);
        if (arret_) break;

        const auto morceau = TamponEnreg(kFichierMorceaux);
        std::memcpy(cleMorceau.data(), morceau.data() + m::CleMorceau.offset, kLongueurCle);
        const std::string_view categorie = std::string_view(cleMorceau).substr(0, 3);
        const int classe = ClasseQuota(static_cast<char>(morceau[m::QuotaFlag.offset]));
        // The row key of the per-track reports and of the play counts.
        std::string cleLigne =
            rapport != Rapport::Quotas || passages_ ? Trim(cleMorceau) : std::string();
        if (rapport != Rapport::Quotas) {
            // Per-track reports: "Top Diffusion" keeps the categories marked "OY"; "SACEM" the
            // music categories "000" to "999" (the station's imaging items are not declared).
            if (rapport == Rapport::TopDiffusion &&
                categoriesTop.find("," + Trim(std::string(categorie)) + ",") == std::string::npos)
                continue;
            if (rapport == Rapport::Sacem && !(categorie >= "000" && categorie <= "999")) continue;
            if (p.regrouperVersions) {
                const auto it = Versions().principal.find(cleLigne);
                if (it != Versions().principal.end()) cleLigne = it->second;
                if (principaux.count(Trim(cleMorceau)))
                    descriptionsPrincipales[Trim(cleMorceau)] =
                        DescriptionMorceau(p.source, p.station);
            }
        } else if (classe == 0) {
            continue;  // unknown quota flag: not counted
        }

        // rec::HistoryKey(cleMorceau): the track's key, then the history's suffix (the call
        // gives back the key it found, the same; anything else is put right).
        if (cleH.size() != modeleCleH.size() ||
            std::memcmp(cleH.data() + kLongueurCle, modeleCleH.data() + kLongueurCle,
                        modeleCleH.size() - kLongueurCle) != 0)
            cleH = modeleCleH;
        std::memcpy(cleH.data(), cleMorceau.data(), kLongueurCle);
        BTRieve(p.source, kBtrGetEqual, cleH, 0, kFichierHistorique, p.station, kOrigine);
        if (StatutBTrieve == 4) continue;  // never broadcast
        if (StatutBTrieve != 0) {
            ErreurBTrieve(p.source, kFichierHistorique, cleH, kOrigine, p.station);
            continue;
        }
        const auto histo = TamponEnreg(kFichierHistorique);
        const int nb = rec::CappedPassageCount(histo, categorie);
        const uint8_t* entree = histo.data() + h::Passages.offset;
        long comptes = 0;
        // Nothing in this loop yields to the event loop: a stop asked is seen after the track.
        for (int i = 0; i < nb; ++i, entree += h::kLongueurPassage) {
            int rang = 0;
            bool weekEnd = false;
            int minutes = 0;
            if (!periode.Dans(entree, rang, weekEnd, minutes)) continue;
            ++comptes;
            if (rapport != Rapport::Quotas) continue;
            // The day row: the row whose header is the entry's date.
            const int row = rang + 1;
            if (row > joursCrees) continue;
            comptesQuotas.Ajouter(classe, row);
            if (classe == kColFr || classe == kColNT) comptesQuotas.Ajouter(kColFrNT, row);
            // The regulated band, 06:30 (08:30 at weekends) to 22:30, seconds ignored.
            const int debutBande = weekEnd ? kDebutBandeWeekEnd : kDebutBandeSemaine;
            if (minutes >= debutBande && minutes <= kFinBande) {
                comptesQuotas.Ajouter(classe + kDecalageBande, row);
                if (classe == kColFr || classe == kColNT)
                    comptesQuotas.Ajouter(kColFrNT + kDecalageBande, row);
            }
        }
        bilan_.passagesComptes += comptes;
        if (rapport == Rapport::Quotas && passages_ && comptes > 0) {
            auto it = passages_->find(cleLigne);
            if (it == passages_->end()) {
                const LigneMorceau l = DescriptionMorceau(p.source, p.station);
                it = passages_->emplace(cleLigne, PassagesMorceau{l.cle, l.titre, l.artistes,
                                                                  l.categorie, 0})
                         .first;
            }
            it->second.nb += comptes;
        }
        if (rapport != Rapport::Quotas && comptes > 0) {
            auto it = lignes.find(cleLigne);
            if (it == lignes.end()) {
                LigneMorceau l = DescriptionMorceau(p.source, p.station);
                it = lignes.emplace(cleLigne, std::move(l)).first;
            }
            it->second.nombre += comptes;
        }
        if (arret_) break;
    }

    if (rapport == Rapport::Quotas) {
        comptesQuotas.Ecrire();
        TotauxEtPourcentages(quotas);
        return;
    }
    // Per-track reports: one row per track (or per song when versions are folded), the most
    // broadcast first, then by title and key.
    std::vector<LigneMorceau> tri;
    for (auto& [cleLigne, l] : lignes) {
        LigneMorceau ligne = l;
        const auto d = descriptionsPrincipales.find(cleLigne);
        if (d != descriptionsPrincipales.end()) {
            const long nombre = ligne.nombre;
            ligne = d->second;
            ligne.nombre = nombre;
        }
        tri.push_back(std::move(ligne));
    }
    std::stable_sort(tri.begin(), tri.end(), [](const LigneMorceau& a, const LigneMorceau& b) {
        if (a.nombre != b.nombre) return a.nombre > b.nombre;
        if (a.titre != b.titre) return a.titre < b.titre;
        return a.cle < b.cle;
    });
    grille.SetMaxRows(static_cast<int>(tri.size()));
    for (size_t i = 0; i < tri.size(); ++i) {
        const int row = static_cast<int>(i + 1);
        const LigneMorceau& l = tri[i];
        grille.SetRowHeader(0, row, std::to_string(row));
        if (rapport == Rapport::TopDiffusion) {
            grille.SetText(kTopTitre, row, l.titre);
            grille.SetText(kTopArtiste, row, l.artiste1);
            grille.SetText(kTopArtiste2, row, l.artiste2);
            grille.SetText(kTopCategorie, row, l.categorie);
            grille.SetText(kTopDuree, row, l.duree);
            grille.SetText(kTopId, row, l.cle);
            grille.SetText(kTopNombre, row, std::to_string(l.nombre));
            grille.SetText(kTopClip, row, l.clip);
        } else {
            grille.SetText(kSacemArtiste, row, l.artistes);
            grille.SetText(kSacemTitre, row, l.titre);
            grille.SetText(kSacemDuree, row, l.duree);
            grille.SetText(kSacemLabel, row, l.label);
            grille.SetText(kSacemNombre, row, std::to_string(l.nombre));
        }
    }
}

namespace {

// Trim(GetText(r, f)) without the intermediate copies: the blanks Trim drops are the same bytes
// in the record's code page and in UTF-8, so they are dropped first.
std::string TexteSansBlancs(std::span<const uint8_t> r, const rec::Field& f) {
    if (r.size() < f.End()) return Trim(rec::GetText(r, f));
    const char* d = reinterpret_cast<const char*>(r.data()) + f.offset;
    const auto blanc = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    size_t a = 0, b = f.length;
    while (a < b && blanc(d[a]))
        ++a;
    while (b > a && blanc(d[b - 1]))
        --b;
    return Cp1252ToUtf8(std::string(d + a, b - a));
}

}  // namespace

IdentiteLignePub IdentiteDiffusionPub(std::span<const uint8_t> log) {
    namespace lp = rec::LogPub;
    IdentiteLignePub l;
    l.client = TexteSansBlancs(log, lp::CodeClient);
    const std::string reference = TexteSansBlancs(log, lp::Reference);
    // Split on "|": two parts are "region/town"; any other count leaves the field as it is.
    const size_t bar = reference.find(lp::kSeparateurReference);
    if (bar != std::string::npos &&
        reference.find(lp::kSeparateurReference, bar + 1) == std::string::npos)
        l.zone = Trim(reference.substr(0, bar)) + "/" + Trim(reference.substr(bar + 1));
    else
        l.zone = reference;
    l.message = TexteSansBlancs(log, lp::CleSpot) + "/" + TexteSansBlancs(log, lp::CleMessage);
    return l;
}

void RechercheStats::RecherchePublicite(const ParametresRecherche& p) {
    namespace lp = rec::LogPub;
    Grid& g = publicite_;
    g.ClearData();
    g.SetMaxRows(0);
    const std::string cleFin = FormatYYYYMMDD(p.fin) + "235959";
    std::unordered_map<std::string, int> premiereLigneClient;
    std::unordered_map<std::string, int> premiereLigneMessage;
    struct RangsLigne {
        int ligne, message, client;
    };
    std::unordered_map<std::string, RangsLigne> premiereLigne;
    ComptesPub totaux(g);
    struct AvantAttente {
        std::function<void()>& f;
        ~AvantAttente() { f = nullptr; }
    } avantAttente{avantAttente_};
    avantAttente_ = [&totaux] { totaux.Ecrire(); };
    // What the bytes of a log record's line fields give: its line (created when new), or
    // nothing for a record without a client; and the client field as it is stored back.
    struct LigneBrute {
        bool ignoree = false;
        int ligne = 0, message = 0, clientLigne = 0;
        std::array<uint8_t, lp::CodeClient.length> client{};
    };
    std::unordered_map<std::string, LigneBrute> parBrut;
    std::string brut;
    const auto LigneDesOctets = [&](std::span<uint8_t> log) {
        LigneBrute r;
        const IdentiteLignePub ligne = IdentiteDiffusionPub(log);
        const std::string& client = ligne.client;
        rec::SetText(log, lp::CodeClient, client);
        std::copy_n(log.begin() + static_cast<std::ptrdiff_t>(lp::CodeClient.offset),
                    lp::CodeClient.length, r.client.begin());
        if (client.empty()) {
            r.ignoree = true;
            return r;
        }
        const std::string& zone = ligne.zone;
        const std::string& colMessage = ligne.message;

        // The line of this client, message and zone; the client's and the message's first lines
        // carry their running totals.
        // Rows are only ever appended, so the first row of a client, of a client's message and
        // of a line are remembered as they are created; a line known already knows the other
        // two.
        std::string cleLigne = client;
        cleLigne += '\x1f';
        cleLigne += colMessage;
        const size_t longueurCleMessage = cleLigne.size();
        cleLigne += '\x1f';
        cleLigne += zone;
        int trouve = 0, rowMessage = 0, rowClient = 0;
        const auto itLigne = premiereLigne.find(cleLigne);
        if (itLigne != premiereLigne.end()) {
            trouve = itLigne->second.ligne;
            rowMessage = itLigne->second.message;
            rowClient = itLigne->second.client;
        } else {
            const std::string cleMessageLigne = cleLigne.substr(0, longueurCleMessage);
            const auto itClient = premiereLigneClient.find(client);
            if (itClient != premiereLigneClient.end()) rowClient = itClient->second;
            const auto itMessage = premiereLigneMessage.find(cleMessageLigne);
            if (itMessage != premiereLigneMessage.end()) rowMessage = itMessage->second;
            trouve = g.MaxRows() + 1;
            g.SetMaxRows(trouve);
            g.SetRowHeader(0, trouve, std::to_string(trouve));
            g.SetText(kPubClient, trouve, client);
            g.SetText(kPubNomClient, trouve, LibClient(p.source, p.station, client));
            const DescriptionPub d = DecrireLignePub(p, rec::GetBytes(log, lp::CleMessage),
                                                     rec::GetBytes(log, lp::NoContrat));
            g.SetText(kPubCommercial, trouve, d.codeCommercial);
            g.SetText(kPubNomCommercial, trouve, d.nomCommercial);
            g.SetText(kPubMessage, trouve, colMessage);
            g.SetText(kPubTexteMessage, trouve, d.texteMessage);
            g.SetText(kPubZone, trouve, zone);
            if (rowMessage == 0) rowMessage = trouve;
            if (rowClient == 0) rowClient = trouve;
            premiereLigne.emplace(cleLigne, RangsLigne{trouve, rowMessage, rowClient});
            premiereLigneMessage.emplace(cleMessageLigne, rowMessage);
            premiereLigneClient.emplace(client, rowClient);
        }
        r.ligne = trouve;
        r.message = rowMessage;
        r.clientLigne = rowClient;
        return r;
    };
    std::string cle = FormatYYYYMMDD(p.debut) + "000000";
    int16_t op = kBtrGetGreaterOrEqual;
    for (;;) {
        BTRieve(p.source, op, cle, 0, kFichierLogPub, p.station, kOrigine);
        op = kBtrGetNext;
        if (StatutBTrieve == 9 || StatutBTrieve == 4) break;
        if (StatutBTrieve != 0) {
            ErreurBTrieve(p.source, kFichierLogPub, cle, kOrigine, p.station);
            break;
        }
        if (cle.compare(0, lp::Cle.length, cleFin) > 0) break;
        ++bilan_.enregistrementsLus;
        Attendre(kFichierLogPub);
        if (arret_) break;

        auto log = TamponEnreg(kFichierLogPub);
        // The line of a record depends only on the bytes of its client, commercial, message
        // and zone fields: records with bytes met before take the line found then, and the texts
        // are built only for bytes not met yet.
        const bool brutLisible = log.size() >= lp::Reference.End();
        if (brutLisible) {
            const char* d = reinterpret_cast<const char*>(log.data());
            brut.assign(d + lp::CodeClient.offset, lp::CleMessage.End() - lp::CodeClient.offset);
            brut.append(d + lp::Reference.offset, lp::Reference.length);
        }
        const auto itBrut = brutLisible ? parBrut.find(brut) : parBrut.end();
        const LigneBrute* connue = itBrut != parBrut.end() ? &itBrut->second : nullptr;
        LigneBrute nouvelle;
        if (!connue) {
            nouvelle = LigneDesOctets(log);
            connue = brutLisible ? &parBrut.emplace(brut, nouvelle).first->second : &nouvelle;
        }
        // The client's code stored back trimmed, as the texts were built from it.
        std::memcpy(log.data() + lp::CodeClient.offset, connue->client.data(),
                    lp::CodeClient.length);
        if (connue->ignoree) continue;
        const int trouve = connue->ligne, rowMessage = connue->message,
                  rowClient = connue->clientLigne;
        totaux.Ajouter(kPubTotalLigne, trouve);
        totaux.Ajouter(kPubTotalMessage, rowMessage);
        totaux.Ajouter(kPubTotalClient, rowClient);
        ++bilan_.diffusionsComptees;
    }
    totaux.Ecrire();
}

BilanRecherche CalculeStatsPassages(const ParametresRecherche& p, Grid& passages) {
    TableursMusique musique;
    Grid publicite;
    InitGeneralTableurMusique(musique);
    InitGeneralTableurPublicite(publicite);
    RechercheStats recherche(musique, publicite);
    std::map<std::string, PassagesMorceau> comptes;
    recherche.CollecterPassages(&comptes);
    ParametresRecherche quotas = p;
    quotas.rapport = Rapport::Quotas;
    recherche.CommandLancer_Click(quotas);

    std::vector<PassagesMorceau> tri;
    tri.reserve(comptes.size());
    for (auto& [cle, l] : comptes)
        tri.push_back(std::move(l));
    std::stable_sort(tri.begin(), tri.end(),
                     [](const PassagesMorceau& a, const PassagesMorceau& b) {
                         if (a.nb != b.nb) return a.nb > b.nb;
                         if (a.titre != b.titre) return a.titre < b.titre;
                         return a.morceau < b.morceau;
                     });
    passages.ClearData();
    passages.SetMaxRows(static_cast<int>(tri.size()));
    for (size_t i = 0; i < tri.size(); ++i) {
        const int row = static_cast<int>(i + 1);
        passages.SetRowHeader(0, row, std::to_string(row));
        passages.SetText(kPassMorceau, row, tri[i].morceau);
        passages.SetText(kPassTitre, row, tri[i].titre);
        passages.SetText(kPassArtiste, row, tri[i].artiste);
        passages.SetText(kPassCategorie, row, tri[i].categorie);
        passages.SetText(kPassNb, row, std::to_string(tri[i].nb));
    }
    return recherche.Bilan();
}

}  // namespace zl3
