#include "DiffusionsMusique.h"

#include <algorithm>
#include <unordered_map>

#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Public.h"
#include "Services.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3 {
namespace {

constexpr int64_t kSecondesJour = 86400;

int Entier2(const std::string& s) {
    if (s.size() != 2 || s[0] < '0' || s[0] > '9' || s[1] < '0' || s[1] > '9') return -1;
    return (s[0] - '0') * 10 + (s[1] - '0');
}

// Statuses other than found / end of file are reported by the database layer and collected
// afterwards, as the search does.
class Lecture {
  public:
    Lecture(int source, int station, const std::function<bool()>& arret, const std::string& origine)
        : source_(source), station_(station), arret_(arret), origine_(origine) {}

    bool Arret() {
        if (Svc().events) Svc().events->DoEvents();
        if (arret_ && arret_()) arrete_ = true;
        return arrete_;
    }
    bool Arrete() const { return arrete_; }

    // FRAD022, the music categories.
    std::vector<MorceauMusique> Morceaux() {
        namespace m = rec::Morceau;
        std::vector<MorceauMusique> liste;
        std::string cle = "000" + std::string(5, '\0');
        const std::string haute = "999" + std::string(5, '\xFF');
        int16_t op = kBtrGetGreaterOrEqual;
        for (int n = 1;; ++n) {
            BTRieve(source_, op, cle, 0, kFichierMorceaux, station_, origine_);
            op = kBtrGetNext;
            if (StatutBTrieve != 0) {
                if (StatutBTrieve != 9)
                    ErreurBTrieve(source_, kFichierMorceaux, cle, origine_, station_);
                break;
            }
            if (cle > haute) break;
            const auto r = TamponEnreg(kFichierMorceaux);
            MorceauMusique mm;
            mm.cle = Trim(rec::GetBytes(r, m::CleMorceau));
            mm.titre = Trim(rec::GetText(r, m::Titre));
            mm.quota = static_cast<char>(r[m::QuotaFlag.offset]);
            mm.codeArtiste1 = rec::GetBytes(r, m::CodeArtiste1);
            mm.codeArtiste2 = rec::GetBytes(r, m::CodeArtiste2);
            mm.codeLabel = rec::GetBytes(r, m::CodeLabel);
            for (char c : rec::GetBytes(r, m::Duree)) {
                if (c < '0' || c > '9') break;
                mm.duree = mm.duree * 10 + (c - '0');
            }
            liste.push_back(std::move(mm));
            if (n % 20 == 0) {
                const auto tampon = TamponEnreg(kFichierMorceaux);
                const std::vector<uint8_t> garde(tampon.begin(), tampon.end());
                const bool stop = Arret();
                std::copy(garde.begin(), garde.end(), tampon.begin());
                if (stop) break;
            }
        }
        return liste;
    }

    // FRAD047 of each track: every entry read, as the Quotas report reads them.
    std::vector<DiffusionMusique> Historiques(std::vector<MorceauMusique>& morceaux) {
        std::vector<DiffusionMusique> diffusions;
        for (size_t i = 0; i < morceaux.size(); ++i) {
            if ((i + 1) % 20 == 0 && Arret()) break;
            MorceauMusique& mm = morceaux[i];
            std::string cleH = rec::HistoryKey(mm.cle);
            BTRieve(source_, kBtrGetEqual, cleH, 0, kFichierHistorique, station_, origine_);
            if (StatutBTrieve == 4) continue;
            if (StatutBTrieve != 0) {
                ErreurBTrieve(source_, kFichierHistorique, cleH, origine_, station_);
                continue;
            }
            const auto h = TamponEnreg(kFichierHistorique);
            mm.ecrits = rec::GetInt16(h, rec::HistoriqueDiffusion::NbPassages);
            mm.lus = rec::CappedPassageCount(h, mm.cle);
            bool premier = true;
            for (int e = 0; e < mm.lus; ++e) {
                const auto quand = rec::PassageAt(h, e);
                if (!quand) continue;
                const int64_t t = InstantDe(*quand);
                if (premier || t < mm.plusAncienLu) mm.plusAncienLu = t;
                premier = false;
                diffusions.push_back({t, static_cast<int>(i)});
            }
        }
        return diffusions;
    }

    // FRAD028, whole file in time order: the broadcasts of music tracks.
    std::vector<DiffusionMusique> Evenements(const std::unordered_map<std::string, int>& index,
                                      std::optional<int64_t>& premier) {
        namespace ev = rec::EvenementMusical;
        std::vector<DiffusionMusique> diffusions;
        std::string cle;
        int16_t op = kBtrGetFirst;
        for (long n = 1;; ++n) {
            BTRieve(source_, op, cle, 0, kFichierEvenementsMusicaux, station_, origine_);
            op = kBtrGetNext;
            if (StatutBTrieve != 0) {
                if (StatutBTrieve != 9)
                    ErreurBTrieve(source_, kFichierEvenementsMusicaux, cle, origine_, station_);
                break;
            }
            const auto r = TamponEnreg(kFichierEvenementsMusicaux);
            const auto date = ParseYYYYMMDD(rec::GetBytes(r, ev::Date));
            const int hh = Entier2(rec::GetBytes(r, ev::Heure));
            const int mi = Entier2(rec::GetBytes(r, ev::Minute));
            const int ss = Entier2(rec::GetBytes(r, ev::Seconde));
            if (date && hh >= 0 && hh < 24 && mi >= 0 && mi < 60 && ss >= 0 && ss < 60) {
                DateTime t = *date;
                t.hour = hh;
                t.minute = mi;
                t.second = ss;
                const int64_t instant = InstantDe(t);
                if (!premier || instant < *premier) premier = instant;
                const auto it = index.find(Trim(rec::GetBytes(r, ev::CleMorceau)));
                if (it != index.end()) diffusions.push_back({instant, it->second});
            }
            if (n % 1000 == 0) {
                const auto tampon = TamponEnreg(kFichierEvenementsMusicaux);
                const std::vector<uint8_t> garde(tampon.begin(), tampon.end());
                const bool stop = Arret();
                std::copy(garde.begin(), garde.end(), tampon.begin());
                if (stop) break;
            }
        }
        return diffusions;
    }

  private:
    int source_, station_;
    const std::function<bool()>& arret_;
    const std::string& origine_;
    bool arrete_ = false;
};

}  // namespace

FichiersLus::FichiersLus(int source, int station, std::initializer_list<int> fichiers)
    : source_(source), station_(station) {
    const bool avant = ErreursSilencieuses;
    ErreursSilencieuses = true;
    for (int f : fichiers) {
        if (FichierOuvert(source, station, f)) continue;
        FichierPervasiveOuvrir(source, station, station, f, -2);
        if (FichierOuvert(source, station, f)) ouverts_.push_back(f);
    }
    ErreursSilencieuses = avant;
}

FichiersLus::~FichiersLus() {
    for (int f : ouverts_)
        FichierPervasiveFermer(source_, station_, station_, f);
}

bool FichiersLus::Ouvert(int f) const {
    return FichierOuvert(source_, station_, f);
}

int64_t InstantDe(const DateTime& t) {
    return DaysFromCivil(t.year, t.month, t.day) * kSecondesJour + t.hour * 3600 + t.minute * 60 +
           t.second;
}

std::string TexteDateInstant(int64_t instant) {
    const int64_t j =
        instant >= 0 ? instant / kSecondesJour : (instant - kSecondesJour + 1) / kSecondesJour;
    return FormatDDMMYYYY(CivilFromDays(j));
}

DiffusionsMusique LireDiffusionsMusique(int source, int station, int64_t debutPeriode,
                                        const std::function<bool()>& arret,
                                        const std::string& origine) {
    DiffusionsMusique d;
    FichiersLus fichiers(source, station,
                        {kFichierMorceaux, kFichierHistorique, kFichierEvenementsMusicaux});
    if (!fichiers.Ouvert(kFichierMorceaux)) {
        const std::string chemin = CheminFichier(source, station, kFichierMorceaux);
        d.texteSource = "Fichier des morceaux illisible" + (chemin.empty() ? "" : ": " + chemin);
        return d;
    }
    d.lisible = true;
    Lecture lecture(source, station, arret, origine);
    d.morceaux = lecture.Morceaux();
    std::unordered_map<std::string, int> index;
    for (size_t i = 0; i < d.morceaux.size(); ++i)
        index.emplace(d.morceaux[i].cle, static_cast<int>(i));

    std::vector<DiffusionMusique> historiques;
    if (fichiers.Ouvert(kFichierHistorique) && !lecture.Arrete())
        historiques = lecture.Historiques(d.morceaux);
    std::vector<DiffusionMusique> evenements;
    std::optional<int64_t> premierEvenement;
    if (fichiers.Ouvert(kFichierEvenementsMusicaux) && !lecture.Arrete())
        evenements = lecture.Evenements(index, premierEvenement);
    d.arretee = lecture.Arrete();

    for (const MorceauMusique& mm : d.morceaux)
        if (mm.ecrits > mm.lus && mm.lus > 0 && mm.plusAncienLu > debutPeriode)
            d.morceauxTronques.push_back(mm.cle + " " + mm.titre + " (" +
                                         std::to_string(mm.ecrits) + " passages, " +
                                         std::to_string(mm.lus) + " lus, depuis le " +
                                         TexteDateInstant(mm.plusAncienLu) + ")");

    if (premierEvenement && *premierEvenement < debutPeriode + kSecondesJour) {
        d.source = SourceComptage::Evenements;
        d.diffusions = std::move(evenements);
        d.texteSource = "Événements musicaux diffusés (FRAD028), complets depuis le " +
                        TexteDateInstant(*premierEvenement);
        if (!d.morceauxTronques.empty())
            d.texteSource += "; " + std::to_string(d.morceauxTronques.size()) +
                             " morceau(x) à l'historique tronqué comptés exactement";
    } else {
        d.source = SourceComptage::Historique;
        d.diffusions = std::move(historiques);
        d.texteSource = "Historique des morceaux (FRAD047, 672 passages par morceau)";
        if (!fichiers.Ouvert(kFichierEvenementsMusicaux))
            d.texteSource += ": pas d'événements musicaux (FRAD028) pour cette station";
        else if (premierEvenement)
            d.texteSource += ": les événements musicaux (FRAD028) ne commencent que le " +
                             TexteDateInstant(*premierEvenement);
        else
            d.texteSource += ": aucun événement musical (FRAD028)";
        if (!d.morceauxTronques.empty())
            d.texteSource += "; " + std::to_string(d.morceauxTronques.size()) +
                             " morceau(x) à l'historique tronqué: diffusions de la période "
                             "possiblement manquantes";
    }
    std::sort(d.diffusions.begin(), d.diffusions.end(),
              [](const DiffusionMusique& a, const DiffusionMusique& b) {
                  return a.instant != b.instant ? a.instant < b.instant : a.morceau < b.morceau;
              });
    if (!d.diffusions.empty()) d.debutDonnees = d.diffusions.front().instant;
    if (d.source == SourceComptage::Evenements) d.debutDonnees = *premierEvenement;
    for (const DiffusionMusique& x : d.diffusions) {
        MorceauMusique& mm = d.morceaux[static_cast<size_t>(x.morceau)];
        if (!mm.premiere) mm.premiere = x.instant;
    }
    if (d.source == SourceComptage::Historique)
        for (MorceauMusique& mm : d.morceaux)
            mm.premiereIncertaine = mm.ecrits > mm.lus;
    return d;
}

}  // namespace zl3
