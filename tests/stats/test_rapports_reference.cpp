// Every report on a generated station, cell for cell, against a plain reference computed here
// from the records: dates rendered as texts and compared as texts, day rows and advertising lines
// found by scanning the grid, counts kept as cell texts and read back at each increment. Whatever
// the reports do to go faster must give the same texts.
#include <algorithm>
#include <cstdio>
#include <map>

#include "BaseDemo.h"
#include "BaseTest.h"
#include "Lib_Public.h"
#include "Lib_Stats.h"
#include "Lib_Tableur.h"
#include "Recherche.h"

namespace zl3 {
namespace {

constexpr int kSlotReference = 1;
using Cellules = std::vector<std::vector<std::string>>;  // [row][col], row 0 and col 0 unused

void Plus(std::string& cellule, long long n = 1) {
    cellule = std::to_string(std::atoll(cellule.c_str()) + n);
}

// A broadcast entry as its texts: "yyyyMMdd", "HHMM"; false when it is not a real date and time.
bool TextesPassage(const uint8_t* e, std::string& jour, std::string& heure, DateTime& quand) {
    int v[6];
    for (int i = 0; i < 6; ++i)
        if ((v[i] = e[i] - 32) < 0) return false;
    quand = DateTime{2000 + v[0], v[1], v[2], v[3], v[4], v[5]};
    if (v[1] < 1 || v[1] > 12 || v[2] < 1 || v[2] > DaysInMonth(quand.year, v[1]) || v[3] > 23 ||
        v[4] > 59 || v[5] > 59)
        return false;
    char t[40];
    std::snprintf(t, sizeof t, "%04d%02d%02d", quand.year, v[1], v[2]);
    jour = t;
    std::snprintf(t, sizeof t, "%02d%02d", v[3], v[4]);
    heure = t;
    return true;
}

class RapportsReferenceTest : public test::BaseTest {
  protected:
    void SetUp() override {
        BaseTest::SetUp();
        demo::OptionsBaseDemo o;
        o.stations = 1;
        o.morceaux = 400;
        o.jours = 40;
        o.annees = 1;  // full records, most entries outside the period
        o.fin = DateTime{2026, 10, 31};
        o.graine = 7;
        const demo::BilanStation bilan = demo::RemplirBaseDemo(o, data_).stations[0];
        ASSERT_GT(std::count(bilan.entrees.begin(), bilan.entrees.end(), 672), 0);
        OuvrirFichiersRecherche(0, 1, 1);
        OuvrirFichiersRecherche(kSlotReference, 1, 1);
        InitGeneralTableurMusique(musique);
        InitGeneralTableurPublicite(pub);
        // Half the period has no broadcasts; the first day is not a Monday.
        debut = DateTime{2026, 10, 9};
        fin = DateTime{2026, 11, 20};
    }

    Grid& Lancer(Rapport r) {
        ParametresRecherche p;
        p.rapport = r;
        p.debut = debut;
        p.fin = fin;
        recherche.CommandLancer_Click(p);
        EXPECT_FALSE(recherche.Bilan().incomplete);
        return GrilleDuRapport(musique, pub, r);
    }

    // Calls the reference's reads make, on their own slot.
    int16_t Lire(int16_t op, std::string& cle, int noCle, int fichier) {
        BTRieve(kSlotReference, op, cle, noCle, fichier, 1, "reference");
        return StatutBTrieve;
    }

    // The music walk: each track of "000".."999" in key order with its history record, if any;
    // the first `limite` tracks only.
    template <class F>
    void ParcourirMorceaux(F&& parMorceau, int limite = 1 << 30) {
        std::string cle = "000" + std::string(5, '\0');
        for (int16_t op = kBtrGetGreaterOrEqual; Lire(op, cle, 0, kFichierMorceaux) == 0;
             op = kBtrGetNext) {
            if (cle > "999" + std::string(5, '\xFF') || limite-- == 0) break;
            const auto m = TamponEnreg(kFichierMorceaux);
            const std::vector<uint8_t> morceau(m.begin(), m.end());
            std::string cleH = rec::HistoryKey(rec::GetBytes(morceau, rec::Morceau::CleMorceau));
            if (Lire(kBtrGetEqual, cleH, 0, kFichierHistorique) != 0) continue;
            const auto h = TamponEnreg(kFichierHistorique);
            parMorceau(morceau, std::vector<uint8_t>(h.begin(), h.end()));
        }
    }

    // Entries of the period, as ("yyyyMMdd", "HHMM", time).
    template <class F>
    void PassagesDeLaPeriode(const std::vector<uint8_t>& morceau,
                             const std::vector<uint8_t>& histo, F&& parPassage) {
        const std::string categorie = rec::GetBytes(morceau, rec::Morceau::CleMorceau).substr(0, 3);
        int nb = rec::GetInt16(histo, rec::HistoriqueDiffusion::NbPassages);
        const int plafond = (categorie == "JIN" || categorie == "LIN") ? 200 : 672;
        nb = std::clamp(nb, 0, plafond);
        const std::string d = FormatYYYYMMDD(debut), f = FormatYYYYMMDD(fin);
        for (int i = 0; i < nb; ++i) {
            std::string jour, heure;
            DateTime quand;
            if (!TextesPassage(&histo[rec::HistoriqueDiffusion::Passages.offset + 6 * i], jour,
                               heure, quand))
                continue;
            if (jour < d || jour > f) continue;
            parPassage(jour, heure, quand);
        }
    }

    Cellules ReferenceQuotas(int limite = 1 << 30) {
        const int nbJours = static_cast<int>(DayDiff(debut, fin)) + 1;
        Cellules c(nbJours + 2, std::vector<std::string>(kNbColonnesQuotas + 1));
        std::vector<std::string> entetes(nbJours + 1);
        for (int i = 1; i <= nbJours; ++i)
            entetes[i] = FormatDDMMYYYY(AddDays(debut, i - 1), '-');
        ParcourirMorceaux([&](const std::vector<uint8_t>& m, const std::vector<uint8_t>& h) {
            const char flag = static_cast<char>(m[rec::Morceau::QuotaFlag.offset]);
            const int classe = flag == 'O' ? 1 : flag == '1' ? 2 : flag == 'N' ? 4 : flag == '-' ? 5 : 0;
            if (!classe) return;
            PassagesDeLaPeriode(m, h, [&](const std::string&, const std::string& heure,
                                          const DateTime& quand) {
                const std::string entete = FormatDDMMYYYY(quand, '-');
                int row = 0;
                for (int r = 1; r <= nbJours && !row; ++r)
                    if (entetes[r] == entete) row = r;
                if (!row) return;
                Plus(c[row][classe]);
                if (classe <= 2) Plus(c[row][3]);
                const std::string debutBande = DayOfWeek(quand) >= 6 ? "0830" : "0630";
                if (heure >= debutBande && heure <= "2230") {
                    Plus(c[row][classe + 9]);
                    if (classe <= 2) Plus(c[row][12]);
                }
            });
        }, limite);
        const int total = nbJours + 1;
        for (int col : {1, 2, 3, 4, 5, 10, 11, 12, 13, 14}) {
            long long s = 0;
            for (int r = 1; r <= nbJours; ++r)
                s += std::atoll(c[r][col].c_str());
            c[total][col] = std::to_string(s);
        }
        for (int r = 1; r <= total; ++r)
            for (int d : {0, 9}) {
                const long long fr = std::atoll(c[r][1 + d].c_str()), nt = std::atoll(c[r][2 + d].c_str()),
                                frnt = std::atoll(c[r][3 + d].c_str()), etr = std::atoll(c[r][4 + d].c_str());
                if (fr + nt + etr == 0) continue;
                c[r][6 + d] = TextePourcentage(fr, fr + nt + etr);
                c[r][7 + d] = TextePourcentage(nt, fr + nt + etr);
                c[r][8 + d] = TextePourcentage(frnt, fr + nt + etr);
                c[r][9 + d] = TextePourcentage(etr, fr + nt + etr);
            }
        return c;
    }

    // "Top Diffusion" (categories whose "CAT_2" parameters hold "OY") or "SACEM" (categories
    // "000" to "999"): one row per track, the most broadcast first, then by title and key.
    Cellules ReferenceParMorceau(Rapport r) {
        namespace m = rec::Morceau;
        std::string liste = ",";
        std::string cle = "CAT_2";
        for (int16_t op = kBtrGetGreaterOrEqual;
             Lire(op, cle, 1, kFichierAttributs) == 0 && cle.rfind("CAT_2", 0) == 0;
             op = kBtrGetNext) {
            const auto a = TamponEnreg(kFichierAttributs);
            if (rec::GetText(a, rec::Categorie::Parametres).find("OY") != std::string::npos)
                liste += Trim(rec::GetBytes(a, rec::Categorie::CodeAttribut)) + ",";
        }
        struct Ligne {
            long nb = 0;
            std::string titre, cle;
            std::vector<std::string> cellules;
        };
        std::vector<Ligne> lignes;
        ParcourirMorceaux([&](const std::vector<uint8_t>& mo, const std::vector<uint8_t>& h) {
            const std::string categorie = rec::GetBytes(mo, m::CleMorceau).substr(0, 3);
            if (r == Rapport::TopDiffusion && liste.find("," + Trim(categorie) + ",") == std::string::npos)
                return;
            Ligne l;
            PassagesDeLaPeriode(mo, h, [&](auto&&...) { ++l.nb; });
            if (l.nb == 0) return;
            l.titre = Trim(rec::GetText(mo, m::Titre));
            l.cle = Trim(rec::GetBytes(mo, m::CleMorceau));
            const std::string code2 = Trim(rec::GetBytes(mo, m::CodeArtiste2));
            const std::string a1 = Trim(LibArtiste(kSlotReference, 1, rec::GetBytes(mo, m::CodeArtiste1), "", true));
            const std::string a2 = code2.empty() ? "" : Trim(LibArtiste(kSlotReference, 1, code2, "", true));
            const std::string duree = Trim(rec::GetBytes(mo, m::Duree));
            const std::string mmss = duree.empty() ? "" : Tps2MinSec(std::atol(duree.c_str()));
            const std::string clip = Trim(rec::GetBytes(mo, m::Clip));
            if (r == Rapport::TopDiffusion)
                l.cellules = {"", l.titre, a1, a2,
                              LibCategorie(kSlotReference, 1, rec::GetBytes(mo, m::CodeCategorie)),
                              mmss, l.cle, std::to_string(l.nb), clip == "O" || clip == "1" ? "Oui" : ""};
            else
                l.cellules = {"", code2.empty() ? a1 : Trim(a1 + " + " + a2), l.titre, mmss,
                              LibLabel(kSlotReference, 1, Trim(rec::GetBytes(mo, m::CodeLabel))),
                              std::to_string(l.nb)};
            lignes.push_back(std::move(l));
        });
        std::stable_sort(lignes.begin(), lignes.end(), [](const Ligne& a, const Ligne& b) {
            return a.nb != b.nb ? a.nb > b.nb : a.titre != b.titre ? a.titre < b.titre : a.cle < b.cle;
        });
        Cellules c(1);
        for (Ligne& l : lignes)
            c.push_back(std::move(l.cellules));
        return c;
    }

    // The advertising log of the period, each broadcast's line found by scanning the grid.
    Cellules ReferencePublicite(int limite = 1 << 30) {
        namespace lp = rec::LogPub;
        Cellules c(1);
        const std::string cleFin = FormatYYYYMMDD(fin) + "235959";
        std::string cle = FormatYYYYMMDD(debut) + "000000";
        for (int16_t op = kBtrGetGreaterOrEqual; Lire(op, cle, 0, kFichierLogPub) == 0;
             op = kBtrGetNext) {
            if (cle.substr(0, 14) > cleFin || limite-- == 0) break;
            const auto tampon = TamponEnreg(kFichierLogPub);
            const std::vector<uint8_t> log(tampon.begin(), tampon.end());
            const std::string client = Trim(rec::GetText(log, lp::CodeClient));
            if (client.empty()) continue;
            const std::string ref = Trim(rec::GetText(log, lp::Reference));
            const size_t barre = ref.find('|');
            const std::string zone = barre != std::string::npos && ref.find('|', barre + 1) == std::string::npos
                                         ? Trim(ref.substr(0, barre)) + "/" + Trim(ref.substr(barre + 1))
                                         : ref;
            const std::string message = Trim(rec::GetText(log, lp::CleSpot)) + "/" +
                                        Trim(rec::GetText(log, lp::CleMessage));
            int rowClient = 0, rowMessage = 0, trouve = 0;
            for (int r = 1; r < static_cast<int>(c.size()) && !trouve; ++r) {
                if (c[r][1] != client) continue;
                if (!rowClient) rowClient = r;
                if (c[r][5] != message) continue;
                if (!rowMessage) rowMessage = r;
                if (c[r][7] == zone) trouve = r;
            }
            if (!trouve) {
                trouve = static_cast<int>(c.size());
                std::vector<std::string> l(kNbColonnesPub + 1);
                l[1] = client;
                l[2] = LibClient(kSlotReference, 1, client);
                std::string cleM = rec::GetBytes(log, lp::CleMessage);
                l[6] = "Message: " + Trim(rec::GetText(log, lp::CleMessage));
                if (Lire(kBtrGetEqual, cleM, 0, kFichierMessages) == 0) {
                    const auto msg = TamponEnreg(kFichierMessages);
                    l[6] = PadNumber(PubNoSpot(rec::GetBytes(msg, rec::MessagePub::NoSpot)), 4) +
                           " " + Trim(rec::GetText(msg, rec::MessagePub::TexteMessage));
                }
                const std::string contrat = rec::GetBytes(log, lp::NoContrat);
                std::string cleC = contrat;
                if (Lire(kBtrGetGreaterOrEqual, cleC, 2, kFichierContrats) == 0) {
                    const auto ec = TamponEnreg(kFichierContrats);
                    if (rec::GetBytes(ec, rec::EnteteContrat::NoContrat) == contrat)
                        l[3] = Trim(rec::GetText(ec, rec::EnteteContrat::CodeCommercial));
                }
                l[4] = "Commercial: " + l[3];
                std::string cleCo = Calibre(l[3], static_cast<int>(rec::Commercial::CodeCommercial.length));
                if (!l[3].empty() && Lire(kBtrGetEqual, cleCo, 0, kFichierCommerciaux) == 0)
                    l[4] = Trim(rec::GetText(TamponEnreg(kFichierCommerciaux), rec::Commercial::NomCommercial));
                l[5] = message;
                l[7] = zone;
                c.push_back(l);
                if (!rowMessage) rowMessage = trouve;
                if (!rowClient) rowClient = trouve;
            }
            Plus(c[trouve][10]);
            Plus(c[rowMessage][9]);
            Plus(c[rowClient][8]);
        }
        return c;
    }

    // The grid holds the reference's texts, and nothing else (in the rows `lignes` given, the
    // whole grid when none).
    void Comparer(const Grid& g, const Cellules& attendu, int lignes = -1,
                  std::vector<int> colonnes = {}) {
        if (lignes < 0) {
            ASSERT_EQ(g.MaxRows(), static_cast<int>(attendu.size()) - 1);
            lignes = g.MaxRows();
        }
        if (colonnes.empty())
            for (int col = 1; col <= g.MaxCols(); ++col)
                colonnes.push_back(col);
        for (int r = 1; r <= lignes; ++r)
            for (int col : colonnes)
                ASSERT_EQ(g.Text(col, r), attendu[r][col]) << "row " << r << " column " << col;
    }
    // The grid of the report as the event loop sees it at its `n`-th call; the clock moves on
    // by `ms` at each call.
    void VueALAppel(int n, const Grid& g, Grid& vue, int64_t ms = 100) {
        events.onEvents = [this, n = events.calls + n, &g, &vue, ms] {
            clock.Advance(ms);
            if (events.calls == n) vue = g;
        };
    }

    TableursMusique musique;
    Grid pub;
    RechercheStats recherche{musique, pub};
    DateTime debut, fin;
};

TEST_F(RapportsReferenceTest, EveryReportGivesTheTextsOfThePlainComputation) {
    // While the walk runs, each yield shows the counts of the tracks (every 20th track) and of
    // the log records (each one) read before it.
    Grid vue;
    VueALAppel(7, musique.quotas, vue);
    Comparer(Lancer(Rapport::Quotas), ReferenceQuotas());
    const int jours = musique.quotas.MaxRows() - 1;
    Comparer(vue, ReferenceQuotas(7 * 20 - 1), jours, {1, 2, 3, 4, 5, 10, 11, 12, 13, 14});
    EXPECT_NE(vue.Text(kColFr, jours + 1), musique.quotas.Text(kColFr, jours + 1));
    EXPECT_GT(recherche.Bilan().passagesComptes, 1000);
    EXPECT_EQ(musique.quotas.RowHeader(0, 1), "09-10-2026");
    // Yields 30 ms apart: the grid is written at the first one, then at most every 100 ms (at
    // the 5th yield, 120 ms later), so the 7th yield still shows the counts of the 5th.
    VueALAppel(7, musique.quotas, vue, 30);
    Comparer(Lancer(Rapport::Quotas), ReferenceQuotas());
    Comparer(vue, ReferenceQuotas(5 * 20 - 1), jours, {1, 2, 3, 4, 5, 10, 11, 12, 13, 14});
    Comparer(Lancer(Rapport::TopDiffusion), ReferenceParMorceau(Rapport::TopDiffusion));
    Comparer(Lancer(Rapport::Sacem), ReferenceParMorceau(Rapport::Sacem));
    VueALAppel(300, pub, vue);
    Comparer(Lancer(Rapport::Publicite), ReferencePublicite());
    EXPECT_GT(recherche.Bilan().diffusionsComptees, 300);
    const Cellules partielle = ReferencePublicite(299);
    Comparer(vue, partielle, static_cast<int>(partielle.size()) - 1);
}

}  // namespace
}  // namespace zl3
