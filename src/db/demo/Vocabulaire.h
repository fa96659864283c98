// Words and names the demo station database is made of: artists, titles, record labels, clients,
// salespeople, business sectors, advertising texts and broadcast zones. All texts are UTF-8 and
// hold only characters that Windows-1252 can store.
#pragma once

#include <span>

namespace zl3::demo::voc {

using Liste = std::span<const char* const>;

// Artists.
Liste PrenomsFrancais();
Liste NomsFrancais();
Liste PrenomsEtrangers();
Liste NomsEtrangers();
Liste NomsDeScene();       // one-word stage names
Liste GroupesFrancais();   // "Les Hirondelles" style
Liste GroupesEtrangers();  // "The Velvet Owls" style

// Titles: French titles are built from an opening and an ending, foreign ones likewise.
Liste DebutsTitreFrancais();
Liste FinsTitreFrancais();
Liste TitresFrancaisLongs();  // more than 40 characters
Liste DebutsTitreEtranger();
Liste FinsTitreEtranger();
Liste TitresInstrumentaux();
Liste SuffixesVersion();  // " (version acoustique)"
Liste Jingles();
Liste Liners();

Liste Labels();

// Advertising.
Liste Commerciaux();
struct Secteur {
    const char* code;
    const char* libelle;
};
std::span<const Secteur> Secteurs();
// Kinds of business, each with the index of its sector in Secteurs().
struct Enseigne {
    const char* debut;  // "Boulangerie", "Garage"
    int secteur;
};
std::span<const Enseigne> Enseignes();
Liste NomsEnseigne();  // what follows the kind of business: "Lefèvre", "du Beffroi"
Liste Accroches();     // advertising texts
// Contract titles for any time of year ("Notoriété"), and the seasonal one of a month (1..12).
Liste Campagnes();
const char* CampagneDeSaison(int mois);

// Towns the demo site names its stations after (same order as the site's station names), with
// the region they belong to.
Liste Villes();
Liste VillesReference();  // the same towns in capitals without accents, for the log's zones

}  // namespace zl3::demo::voc
