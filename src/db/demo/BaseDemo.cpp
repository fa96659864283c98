#include "BaseDemo.h"

#include <algorithm>

#include "Bibliotheque.h"
#include "Diffusion.h"
#include "Ecriture.h"
#include "FichiersWma.h"
#include "Hasard.h"
#include "Publicite.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3::demo {
namespace {

// Streams of the seed, so that each part of the database draws its own numbers: adding a
// station or a base leaves the others as they were.
enum Flux : uint64_t {
    kFluxBibliotheque = 1,
    kFluxRegie,
    kFluxDiffusion,
    kFluxPublicite,
    kFluxAnciens
};

// Tracks a station programmes after years on air (the others are in its archive).
constexpr int kMorceauxProgrammes = 2500;
// Archive tracks were programmed in the years before the simulated ones: this share of them keep
// 1 to kAnciensMax broadcasts of the kAnneesAnciennes years before.
constexpr double kPartArchiveDiffusee = 0.7;
constexpr int kAnciensMax = 40;
constexpr int kAnneesAnciennes = 5;

constexpr rec::Field kEvenementSequence =
    rec::decl::Named(rec::EvenementMusical::kFields, "Champ014");
constexpr rec::Field kEvenementHeure2 = rec::decl::Named(rec::EvenementMusical::kFields, "Heure2");
constexpr rec::Field kEvenementMinute2 =
    rec::decl::Named(rec::EvenementMusical::kFields, "Minute2");
constexpr rec::Field kEvenementSeconde2 =
    rec::decl::Named(rec::EvenementMusical::kFields, "Seconde2");

// A record of `layout` under construction, inserted with the catalogue's record length.
class Enregistrement {
  public:
    explicit Enregistrement(const rec::Layout& layout)
        : layout_(layout), octets_(rec::NewRecord(layout)) {}
    Enregistrement& Texte(const rec::Field& f, std::string_view utf8) {
        rec::SetText(octets_, f, utf8);
        return *this;
    }
    Enregistrement& Octets(const rec::Field& f, std::string_view octets) {
        rec::SetBytes(octets_, f, octets);
        return *this;
    }
    Enregistrement& Entier(const rec::Field& f, int valeur) {
        rec::SetInt16(octets_, f, static_cast<int16_t>(valeur));
        return *this;
    }
    rec::Bytes Octets() { return octets_; }
    void Inserer(EcrivainBtrieve& e, int station) {
        e.Inserer(layout_.catalogueIndex, station, octets_,
                  static_cast<uint32_t>(layout_.recordLength));
    }

  private:
    const rec::Layout& layout_;
    std::vector<uint8_t> octets_;
};

struct Horodatage {
    std::string date;  // "yyyyMMdd"
    std::string heure, minute, seconde;
};
Horodatage Decouper(int64_t instant) {
    const DateTime t = DateDeLInstant(instant);
    return {FormatYYYYMMDD(t), PadNumber(t.hour, 2), PadNumber(t.minute, 2),
            PadNumber(t.second, 2)};
}

// ---- Music ----------------------------------------------------------------------------------

void EcrireAttributs(EcrivainBtrieve& e, int station, const BibliothequeDemo& b) {
    using namespace rec::Categorie;
    for (const CategorieDemo& c : b.categories)
        Enregistrement(kLayout)
            .Texte(TypeAttribut, "CATEG")
            .Texte(CodeAttribut, c.code)
            .Texte(Libelle, c.libelle)
            .Inserer(e, station);
    // Category parameters: rotation flag (the "Top Diffusion" report lists the categories whose
    // text holds "OY"), tracks in rotation, hours between two plays of a track.
    for (const CategorieDemo& c : b.categories) {
        const std::string parametres =
            std::string(c.top ? "OY" : "ON") + " ROT=" + PadNumber(c.enRotation, 3) +
            " SEP=" + PadNumber(c.habillage ? 1 : (c.enRotation > 0 ? 3 : 24), 3);
        Enregistrement(kLayout)
            .Texte(TypeAttribut, "CAT_2")
            .Texte(CodeAttribut, c.code)
            .Texte(Libelle, c.libelle)
            .Texte(Parametres, parametres)
            .Inserer(e, station);
    }
    for (const LabelDemo& l : b.labels)
        Enregistrement(kLayout)
            .Texte(TypeAttribut, "LABEL")
            .Texte(CodeAttribut, l.code)
            .Texte(Libelle, l.nom)
            .Inserer(e, station);
}

void EcrireArtistes(EcrivainBtrieve& e, int station, const BibliothequeDemo& b) {
    using namespace rec::Artiste;
    for (const ArtisteDemo& a : b.artistes)
        Enregistrement(kLayout)
            .Texte(CodeArtiste, a.code)
            .Texte(NomArtiste, a.nom)
            .Inserer(e, station);
}

void EcrireMorceaux(EcrivainBtrieve& e, int station, const BibliothequeDemo& b) {
    using namespace rec::Morceau;
    for (const MorceauDemo& m : b.morceaux) {
        Enregistrement r(kLayout);
        r.Texte(CleMorceau, m.cle)
            .Texte(Titre, m.titre)
            .Texte(Duree, PadNumber(m.duree, 4))
            .Texte(QuotaFlag, std::string(1, m.quota))
            .Texte(CodeNumerique, "00");
        if (m.artiste1 >= 0) r.Texte(CodeArtiste1, b.artistes[m.artiste1].code);
        if (m.artiste2 >= 0) r.Texte(CodeArtiste2, b.artistes[m.artiste2].code);
        if (m.label >= 0) r.Texte(CodeLabel, b.labels[m.label].code);
        if (m.categorieSecondaire >= 0)
            r.Texte(CodeCategorieSecondaire, b.categories[m.categorieSecondaire].code);
        if (m.clip) r.Texte(Clip, "O");
        if (m.migration) r.Texte(Migration, "O");
        r.Inserer(e, station);
    }
}

void EcrireVersions(EcrivainBtrieve& e, int station, const BibliothequeDemo& b) {
    using namespace rec::MorceauInfos;
    for (const VersionsDemo& v : b.versions) {
        Enregistrement r(kLayout);
        r.Texte(CleMorceau, b.morceaux[v.morceau].cle).Texte(TypeInfo, kTypeVersions);
        for (std::size_t i = 0; i < v.cles.size() && i < kNbVersions; ++i)
            r.Texte(Version(static_cast<int>(i)), v.cles[i]);
        r.Inserer(e, station);
    }
}

void EcrireEvenements(EcrivainBtrieve& e, int station, const BibliothequeDemo& b,
                      const std::vector<EvenementDemo>& evenements) {
    using namespace rec::EvenementMusical;
    for (const EvenementDemo& ev : evenements) {
        const Horodatage t = Decouper(ev.instant);
        Enregistrement(kLayout)
            .Texte(Date, t.date)
            .Texte(Heure, t.heure)
            .Texte(Minute, t.minute)
            .Texte(Seconde, t.seconde)
            .Texte(kEvenementSequence, PadNumber(ev.sequence, 2))
            .Texte(CleMorceau, b.morceaux[ev.morceau].cle)
            .Texte(Date2, t.date)
            .Texte(kEvenementHeure2, t.heure)
            .Texte(kEvenementMinute2, t.minute)
            .Texte(kEvenementSeconde2, t.seconde)
            .Inserer(e, station);
    }
}

// One history record per aired track: its latest broadcasts, newest first, as many as the
// record keeps for its kind of item. `anciens` (per track, newest first) are older still.
// Counts the entries kept per record in `bilan`.
void EcrireHistoriques(EcrivainBtrieve& e, int station, const BibliothequeDemo& b,
                       const std::vector<EvenementDemo>& evenements,
                       const std::vector<std::vector<int64_t>>& anciens, BilanStation& bilan) {
    using namespace rec::HistoriqueDiffusion;
    std::vector<std::vector<int64_t>> parMorceau(b.morceaux.size());
    for (const EvenementDemo& ev : evenements)
        parMorceau[ev.morceau].push_back(ev.instant);
    for (std::size_t m = 0; m < b.morceaux.size(); ++m) {
        std::vector<int64_t>& diffusions = parMorceau[m];
        std::reverse(diffusions.begin(), diffusions.end());
        if (m < anciens.size())
            diffusions.insert(diffusions.end(), anciens[m].begin(), anciens[m].end());
        if (diffusions.empty()) continue;
        const std::string& cle = b.morceaux[m].cle;
        const int garder = rec::CapPassages(cle, static_cast<int>(diffusions.size()));
        Enregistrement r(kLayout);
        r.Octets(Cle, rec::HistoryKey(cle)).Entier(NbPassages, garder);
        for (int i = 0; i < garder; ++i) {
            if (!rec::SetPassageAt(r.Octets(), i, DateDeLInstant(diffusions[i])))
                throw ErreurDemo("Date de diffusion impossible à écrire pour le morceau " + cle);
        }
        r.Inserer(e, station);
        (b.CategorieDe(b.morceaux[m]).archive ? bilan.entreesArchive : bilan.entrees)
            .push_back(garder);
    }
    bilan.historiques =
        static_cast<int64_t>(bilan.entrees.size() + bilan.entreesArchive.size());
}

// Broadcasts of the archive tracks in the kAnneesAnciennes years before `avant`, newest first.
std::vector<std::vector<int64_t>> DiffusionsAnciennes(const BibliothequeDemo& b, int64_t avant,
                                                      uint64_t graine) {
    Hasard h(graine);
    std::vector<std::vector<int64_t>> anciens(b.morceaux.size());
    const int64_t duree = int64_t{kAnneesAnciennes} * 365 * 86400;
    for (std::size_t m = 0; m < b.morceaux.size(); ++m) {
        if (!b.CategorieDe(b.morceaux[m]).archive || !h.Chance(kPartArchiveDiffusee)) continue;
        std::vector<int64_t>& l = anciens[m];
        const int n = h.Entre(1, kAnciensMax);
        for (int i = 0; i < n; ++i)
            l.push_back(avant - 1 - static_cast<int64_t>(h.Reel() * static_cast<double>(duree)));
        std::sort(l.rbegin(), l.rend());
    }
    return anciens;
}

// ---- Advertising ----------------------------------------------------------------------------

void EcrireRegie(EcrivainBtrieve& e, const RegieDemo& regie) {
    for (const CommercialDemo& c : regie.commerciaux)
        Enregistrement(rec::Commercial::kLayout)
            .Texte(rec::Commercial::CodeCommercial, c.code)
            .Texte(rec::Commercial::NomCommercial, c.nom)
            .Inserer(e, 0);
    for (const SecteurDemo& s : regie.secteurs)
        Enregistrement(rec::SecteurActivite::kLayout)
            .Texte(rec::SecteurActivite::CodeSecteur, s.code)
            .Texte(rec::SecteurActivite::Libelle, s.libelle)
            .Inserer(e, 0);
    for (const ClientDemo& c : regie.clients)
        Enregistrement(rec::Client::kLayout)
            .Texte(rec::Client::CodeClient, c.code)
            .Texte(rec::Client::NomClient, c.nom)
            .Inserer(e, 0);
}

void EcrirePublicite(EcrivainBtrieve& e, int station, const RegieDemo& regie,
                     const PubliciteStation& p) {
    for (const ContratDemo& c : p.contrats) {
        using namespace rec::EnteteContrat;
        Enregistrement(kLayout)
            .Texte(TypeContrat, "01")
            .Texte(CodeClient, regie.clients[c.client].code)
            .Texte(NoContrat, c.numero)
            .Texte(CodeCommercial, regie.commerciaux[c.commercial].code)
            .Texte(DateDebut, FormatYYYYMMDD(CivilFromDays(c.premierJour)))
            .Texte(Libelle, c.libelle)
            .Inserer(e, station);
    }
    for (const MessageDemo& m : p.messages) {
        using namespace rec::MessagePub;
        const SpotDemo& spot = p.spots[m.spot];
        const Horodatage t = Decouper(m.creation);
        Enregistrement(kLayout)
            .Texte(CleMessage, m.cle)
            .Texte(CleSpot, spot.cle)
            .Texte(NoSpot, spot.numero)
            .Texte(DateCreation, t.date)
            .Texte(HeureCreation, t.heure + t.minute + t.seconde)
            .Texte(TexteMessage, m.texte)
            .Texte(DureeSecondes, PadNumber(spot.duree, 4))
            .Inserer(e, station);
    }
    for (const SpotPrevu& s : p.prevus) {
        using namespace rec::ConducteurPub;
        const SpotDemo& spot = p.spots[s.spot];
        const Horodatage t = Decouper(s.instant);
        Enregistrement(kLayout)
            .Texte(Date, t.date)
            .Texte(Heure, t.heure)
            .Texte(Minute, t.minute)
            .Texte(Seconde, t.seconde)
            .Texte(CleSpot, spot.cle)
            .Texte(NoContrat, p.contrats[spot.contrat].numero)
            .Texte(DureeSecondes, PadNumber(spot.duree, 4))
            .Texte(TypeEcran, "N")
            .Texte(CleMessage, p.messages[s.message].cle)
            .Inserer(e, station);
    }
    for (const SpotDiffuse& d : p.diffuses) {
        using namespace rec::LogPub;
        const SpotPrevu& prevu = p.prevus[d.prevu];
        const SpotDemo& spot = p.spots[prevu.spot];
        const ContratDemo& contrat = p.contrats[spot.contrat];
        const Horodatage t = Decouper(d.instant);
        Enregistrement(kLayout)
            .Texte(Date, t.date)
            .Texte(Heure, t.heure)
            .Texte(Minute, t.minute)
            .Texte(Seconde, t.seconde)
            .Texte(CodeClient, d.sansClient ? "" : regie.clients[contrat.client].code)
            .Texte(CleSpot, spot.cle)
            .Texte(CleMessage, p.messages[prevu.message].cle)
            .Texte(CodeProduit, contrat.produit)
            .Texte(Reference, contrat.zone)
            .Texte(NoContrat, contrat.numero)
            .Texte(TypeEcran, "STD")
            .Entier(Duree, d.duree)
            .Entier(DureePrevue, spot.duree)
            .Entier(NoEcran, prevu.ecran)
            .Entier(RangEcran, prevu.rang)
            .Entier(NbSpotsEcran, prevu.nbSpots)
            .Texte(DatePrevue, FormatYYYYMMDD(DateDeLInstant(prevu.instant)))
            .Inserer(e, station);
    }
}

}  // namespace

DateTime PremierJourDemo(const OptionsBaseDemo& options) {
    DateTime fin = options.fin;
    fin.hour = fin.minute = fin.second = fin.millisecond = 0;
    return AddDays(fin, -(static_cast<int64_t>(options.jours) - 1));
}

BilanBase RemplirBaseDemo(const OptionsBaseDemo& options, const std::string& dossierData) {
    const auto base = static_cast<uint64_t>(options.base);
    const DateTime premierJour = PremierJourDemo(options);
    const BibliothequeDemo bibliotheque =
        GenererBibliotheque(options.morceaux, Graine(options.graine, {base, kFluxBibliotheque}),
                            options.annees > 0 ? kMorceauxProgrammes : 0);
    // Days of airplay in the history records, ending on the last day.
    const int joursHistorique = std::max(options.jours, options.annees * 365);
    OptionsBaseDemo historique = options;
    historique.jours = joursHistorique;
    const DateTime premierJourHistorique = PremierJourDemo(historique);
    const RegieDemo regie = GenererRegie(Graine(options.graine, {base, kFluxRegie}));

    EcrivainBtrieve ecrivain(dossierData);
    ecrivain.CreerTout(options.stations);
    EcrireRegie(ecrivain, regie);
    ecrivain.Terminer();

    BilanBase bilan;
    bilan.base = options.base;
    for (int station = 0; station < options.stations; ++station) {
        const auto s = static_cast<uint64_t>(station);
        BilanStation bs;
        bs.morceaux = bibliotheque.nbMusique;
        bs.habillages = static_cast<int64_t>(bibliotheque.morceaux.size()) - bibliotheque.nbMusique;

        EcrireAttributs(ecrivain, station, bibliotheque);
        EcrireArtistes(ecrivain, station, bibliotheque);
        EcrireMorceaux(ecrivain, station, bibliotheque);
        EcrireVersions(ecrivain, station, bibliotheque);
        ecrivain.Terminer();
        {
            std::vector<EvenementDemo> evenements =
                GenererDiffusion(bibliotheque, premierJourHistorique, joursHistorique,
                                 Graine(options.graine, {base, kFluxDiffusion, s}));
            std::vector<std::vector<int64_t>> anciens;
            if (options.annees > 0)
                anciens = DiffusionsAnciennes(bibliotheque, Instant(premierJourHistorique),
                                              Graine(options.graine, {base, kFluxAnciens, s}));
            EcrireHistoriques(ecrivain, station, bibliotheque, evenements, anciens, bs);
            // The music events file keeps the days of the events only.
            const int64_t debutEvenements = Instant(premierJour);
            evenements.erase(evenements.begin(),
                             std::find_if(evenements.begin(), evenements.end(),
                                          [&](const EvenementDemo& ev) {
                                              return ev.instant >= debutEvenements;
                                          }));
            EcrireEvenements(ecrivain, station, bibliotheque, evenements);
            bs.evenements = static_cast<int64_t>(evenements.size());
            ecrivain.Terminer();
        }
        {
            const PubliciteStation pub =
                GenererPublicite(regie, options.base, station, premierJour, options.jours,
                                 Graine(options.graine, {base, kFluxPublicite, s}));
            EcrirePublicite(ecrivain, station, regie, pub);
            bs.prevus = static_cast<int64_t>(pub.prevus.size());
            bs.diffuses = static_cast<int64_t>(pub.diffuses.size());
            ecrivain.Terminer();
        }
        bilan.stations.push_back(bs);
    }
    bilan.enregistrements = ecrivain.Comptes();
    if (!options.dossierSonsMusique.empty())
        bilan.fichiersWma = EcrireFichiersWmaDemo(bibliotheque, options.dossierSonsMusique,
                                                  Graine(options.graine, {base, kFluxSonsWma}))
                                .fichiers;
    return bilan;
}

std::string RepartitionEntrees(const std::vector<int>& entrees) {
    std::vector<int> n = entrees;
    if (n.empty()) return "0 historique";
    std::sort(n.begin(), n.end());
    const auto rang = [&](int pourcent) {
        return n[std::min(n.size() - 1, n.size() * static_cast<std::size_t>(pourcent) / 100)];
    };
    std::string ligne = std::to_string(n.size()) + " historiques, entrées : min " +
                        std::to_string(n.front());
    for (int d = 10; d <= 90; d += 10)
        ligne += (d == 50 ? ", médiane " : ", d" + std::to_string(d / 10) + " ") +
                 std::to_string(rang(d));
    ligne += ", max " + std::to_string(n.back()) + ", au plafond de " +
             std::to_string(rec::HistoriqueDiffusion::kNbMaxPassages) + " : " +
             std::to_string(std::count(n.begin(), n.end(), rec::HistoriqueDiffusion::kNbMaxPassages));
    return ligne;
}

}  // namespace zl3::demo
