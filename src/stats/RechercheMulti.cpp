#include "RechercheMulti.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "Cp1252.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Public.h"
#include "Lib_Stats.h"
#include "Lib_Tableur.h"
#include "Recherche.h"
#include "Services.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3 {
namespace {

const char* kOrigineMulti = "FrmListeRechercheMulti:Recherche";
const char* kOrigineDetail = "FrmDetailDonnees:Remplir";

std::string Majuscules(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

bool Contient(const std::string& texte, const std::string& partie) {
    return Majuscules(texte).find(Majuscules(partie)) != std::string::npos;
}

// Opens the files a walk needs under `source` when they are not; closes those it opened.
class FichiersOuverts {
  public:
    FichiersOuverts(int source, int station, std::initializer_list<int> fichiers)
        : source_(source), station_(station) {
        for (int f : fichiers) {
            if (FichierOuvert(source, station, f)) continue;
            FichierPervasiveOuvrir(source, station, station, f, -2);
            if (FichierOuvert(source, station, f)) ouverts_.push_back(f);
        }
    }
    ~FichiersOuverts() {
        for (int f : ouverts_) FichierPervasiveFermer(source_, station_, station_, f);
    }
    FichiersOuverts(const FichiersOuverts&) = delete;
    FichiersOuverts& operator=(const FichiersOuverts&) = delete;

  private:
    int source_;
    int station_;
    std::vector<int> ouverts_;
};

// Yields to the event loop, keeping the record buffer of `fichier` (another reader may use it
// meanwhile).
void Attendre(int fichier) {
    if (!Svc().events) return;
    const auto tampon = TamponEnreg(fichier);
    const std::vector<uint8_t> sauvegarde(tampon.begin(), tampon.end());
    Svc().events->DoEvents();
    std::copy(sauvegarde.begin(), sauvegarde.end(), tampon.begin());
}

// The status just reported by ErreurBTrieve, as the run's incidents list it.
std::string Statut(int fichier) {
    const auto& v = IncidentsBTrieve();
    return v.empty() ? "Err: " + std::to_string(StatutBTrieve) + " (" + std::to_string(fichier) + ")"
                     : v.back();
}

// Broadcasts counted from the history record in the history buffer, as the reports count them.
template <typename F>
void ParcourirPassages(std::span<const uint8_t> histo, const std::string& categorie,
                       const DateTime& debut, const DateTime& fin, F&& f) {
    const std::string d = FormatYYYYMMDD(debut);
    const std::string e = FormatYYYYMMDD(fin);
    const int nb = rec::CappedPassageCount(histo, categorie);
    for (int i = 0; i < nb; ++i) {
        const auto quand = rec::PassageAt(histo, i);
        if (!quand) continue;
        const std::string jour = FormatYYYYMMDD(*quand);
        if (jour < d || jour > e) continue;
        f(*quand);
    }
}

}  // namespace

ResultatMorceaux RechercheMorceaux(const CriteresMorceaux& c) {
    namespace m = rec::Morceau;
    ResultatMorceaux r;
    FichiersOuverts ouverts(c.source, c.station,
                            {kFichierMorceaux, kFichierHistorique, kFichierArtistes,
                             kFichierAttributs});
    std::vector<std::string> mots;
    {
        std::istringstream in(c.mots);
        for (std::string w; in >> w;) mots.push_back(w);
    }
    const std::string artiste = Trim(c.artiste);
    const std::string categorie = Trim(c.categorie);
    const std::string classe = Trim(c.classeQuota);
    const std::string haute = c.cleFin.empty() ? std::string() : c.cleFin + std::string(8, '\xFF');

    std::string cle = c.cleDebut;
    int16_t op = kBtrGetGreaterOrEqual;
    for (int n = 1;; ++n) {
        BTRieve(c.source, op, cle, 0, kFichierMorceaux, c.station, kOrigineMulti);
        op = kBtrGetNext;
        if (StatutBTrieve != 0) {
            if (StatutBTrieve != 9 && StatutBTrieve != 4) {
                ErreurBTrieve(c.source, kFichierMorceaux, cle, kOrigineMulti, c.station);
                r.erreurs.push_back(Statut(kFichierMorceaux));
            }
            break;
        }
        if (!haute.empty() && cle > haute) break;
        ++r.morceauxLus;
        if (n % 20 == 0) {
            Attendre(kFichierMorceaux);
            if (c.arret && c.arret()) {
                r.arretee = true;
                break;
            }
        }
        const auto rec = TamponEnreg(kFichierMorceaux);
        const std::string titre = Trim(rec::GetText(rec, m::Titre));
        if (!std::all_of(mots.begin(), mots.end(),
                         [&](const std::string& w) { return Contient(titre, w); }))
            continue;
        const std::string flag = rec::GetBytes(rec, m::QuotaFlag);
        if (!classe.empty()) {
            const bool connue = flag == "O" || flag == "1" || flag == "N" || flag == "-";
            if (classe == "?" ? connue : Majuscules(flag) != Majuscules(classe)) continue;
        }
        const std::string cleMorceau = rec::GetBytes(rec, m::CleMorceau);
        const std::string code = cleMorceau.substr(0, 3);
        const std::string code1 = rec::GetBytes(rec, m::CodeArtiste1);
        const std::string code2 = rec::GetBytes(rec, m::CodeArtiste2);
        const std::string duree = Trim(rec::GetBytes(rec, m::Duree));
        // Labels looked up only for tracks that pass the cheap criteria.
        const std::string libCategorie = LibCategorie(c.source, c.station, code);
        if (!categorie.empty() && Trim(code) != categorie && !Contient(libCategorie, categorie))
            continue;
        const std::string a1 = Trim(LibArtiste(c.source, c.station, code1, "", true));
        const std::string a2 =
            Trim(code2).empty() ? "" : Trim(LibArtiste(c.source, c.station, code2, "", true));
        if (!artiste.empty() && !Contient(a1, artiste) && !Contient(a2, artiste)) continue;

        MorceauTrouve t;
        t.cle = Trim(cleMorceau);
        t.titre = titre;
        t.artistes = a2.empty() ? a1 : a1 + " + " + a2;
        t.categorie = libCategorie;
        t.classeQuota = flag;
        long secondes = 0;
        for (char ch : duree) {
            if (ch < '0' || ch > '9') break;
            secondes = secondes * 10 + (ch - '0');
        }
        t.duree = duree.empty() ? "" : Tps2MinSec(secondes);
        std::string cleH = rec::HistoryKey(cleMorceau);
        BTRieve(c.source, kBtrGetEqual, cleH, 0, kFichierHistorique, c.station, kOrigineMulti);
        if (StatutBTrieve == 0) {
            ParcourirPassages(TamponEnreg(kFichierHistorique), code, c.debut, c.fin,
                              [&](const DateTime&) { ++t.diffusions; });
        } else if (StatutBTrieve != 4) {
            ErreurBTrieve(c.source, kFichierHistorique, cleH, kOrigineMulti, c.station);
            r.erreurs.push_back(Statut(kFichierHistorique) + " (" + t.cle + ")");
        }
        r.morceaux.push_back(std::move(t));
    }
    return r;
}

void InitTableurRechercheMulti(Grid& g) {
    InitTableur(g, kNbColonnesMulti, 1, 1);
    const char* titres[] = {"Clé", "Titre", "Artistes", "Catégorie", "Quota", "Durée",
                            "Diffusions"};
    const int largeurs[] = {9, 36, 30, 18, 6, 6, 10};
    for (int c = 1; c <= kNbColonnesMulti; ++c) {
        g.SetText(c, 0, titres[c - 1]);
        g.SetColWidth(c, largeurs[c - 1]);
    }
    g.SetGenre(kMulDiffusions, GenreColonne::Nombre);
}

void RemplirTableurRechercheMulti(Grid& g, const std::vector<MorceauTrouve>& morceaux) {
    g.ClearData();
    g.SetMaxRows(static_cast<int>(morceaux.size()));
    for (size_t i = 0; i < morceaux.size(); ++i) {
        const int row = static_cast<int>(i + 1);
        const MorceauTrouve& t = morceaux[i];
        g.SetRowHeader(0, row, std::to_string(row));
        g.SetText(kMulCle, row, t.cle);
        g.SetText(kMulTitre, row, t.titre);
        g.SetText(kMulArtistes, row, t.artistes);
        g.SetText(kMulCategorie, row, t.categorie);
        g.SetText(kMulQuota, row, t.classeQuota);
        g.SetText(kMulDuree, row, t.duree);
        g.SetText(kMulDiffusions, row, std::to_string(t.diffusions));
    }
}

std::vector<DateTime> DiffusionsMorceau(int source, int station, const std::string& cle,
                                        const DateTime& debut, const DateTime& fin,
                                        std::string* erreur) {
    std::vector<DateTime> v;
    FichiersOuverts ouverts(source, station, {kFichierHistorique});
    std::string cleM = Calibre(cle, static_cast<int>(rec::Morceau::CleMorceau.length));
    std::string cleH = rec::HistoryKey(cleM);
    BTRieve(source, kBtrGetEqual, cleH, 0, kFichierHistorique, station, kOrigineMulti);
    if (StatutBTrieve != 0) {
        if (StatutBTrieve != 4) {
            ErreurBTrieve(source, kFichierHistorique, cleH, kOrigineMulti, station);
            if (erreur) *erreur = Statut(kFichierHistorique);
        }
        return v;
    }
    ParcourirPassages(TamponEnreg(kFichierHistorique), cleM.substr(0, 3), debut, fin,
                      [&](const DateTime& d) { v.push_back(d); });
    std::stable_sort(v.begin(), v.end(), [](const DateTime& a, const DateTime& b) {
        return FormatYYYYMMDD(a) + FormatHHMMSS(a) > FormatYYYYMMDD(b) + FormatHHMMSS(b);
    });
    return v;
}

void RemplirTableurDiffusions(Grid& g, const std::vector<DateTime>& diffusions) {
    InitTableur(g, 2, 1, 1);
    g.SetText(1, 0, "Date");
    g.SetText(2, 0, "Heure");
    g.SetColWidth(1, 12);
    g.SetColWidth(2, 10);
    g.SetMaxRows(static_cast<int>(diffusions.size()));
    for (size_t i = 0; i < diffusions.size(); ++i) {
        const int row = static_cast<int>(i + 1);
        g.SetRowHeader(0, row, std::to_string(row));
        g.SetText(1, row, FormatDDMMYYYY(diffusions[i]));
        g.SetText(2, row, FormatHHMMSS(diffusions[i]));
    }
}

void InitTableurDetail(Grid& g) {
    InitTableur(g, 4, 1, 1);
    const char* titres[] = {"Date", "Heure", "Message", "Zone"};
    const int largeurs[] = {12, 10, 24, 24};
    for (int c = 1; c <= 4; ++c) {
        g.SetText(c, 0, titres[c - 1]);
        g.SetColWidth(c, largeurs[c - 1]);
    }
}

BilanDetail DetailLignePublicite(const ParametresDetail& p, Grid& detail) {
    namespace lp = rec::LogPub;
    BilanDetail b;
    InitTableurDetail(detail);
    FichiersOuverts ouverts(p.source, p.station, {kFichierLogPub});
    const std::string cleFin = FormatYYYYMMDD(p.fin) + "235959";
    std::string cle = FormatYYYYMMDD(p.debut) + "000000";
    int16_t op = kBtrGetGreaterOrEqual;
    for (int n = 1;; ++n) {
        BTRieve(p.source, op, cle, 0, kFichierLogPub, p.station, kOrigineDetail);
        op = kBtrGetNext;
        if (StatutBTrieve == 9 || StatutBTrieve == 4) break;
        if (StatutBTrieve != 0) {
            ErreurBTrieve(p.source, kFichierLogPub, cle, kOrigineDetail, p.station);
            b.erreurs.push_back(Statut(kFichierLogPub));
            break;
        }
        if (cle.substr(0, lp::Cle.length) > cleFin) break;
        if (n % 50 == 0) {
            Attendre(kFichierLogPub);
            if (p.arret && p.arret()) {
                b.arretee = true;
                break;
            }
        }
        const auto log = TamponEnreg(kFichierLogPub);
        const IdentiteLignePub l = IdentiteDiffusionPub(log);
        if (l.client.empty() || l.client != p.client || l.message != p.message || l.zone != p.zone)
            continue;
        const int row = ++b.diffusions;
        detail.SetMaxRows(row);
        detail.SetRowHeader(0, row, std::to_string(row));
        const std::string date = rec::GetBytes(log, lp::Date);
        detail.SetText(1, row, date.size() == 8 ? date.substr(6, 2) + "/" + date.substr(4, 2) +
                                                      "/" + date.substr(0, 4)
                                                : date);
        detail.SetText(2, row, rec::GetBytes(log, lp::Heure) + ":" +
                                   rec::GetBytes(log, lp::Minute) + ":" +
                                   rec::GetBytes(log, lp::Seconde));
        detail.SetText(3, row, l.message);
        detail.SetText(4, row, l.zone);
    }
    return b;
}

}  // namespace zl3
