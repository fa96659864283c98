#include "Vocabulaire.h"

namespace zl3::demo::voc {
namespace {

constexpr const char* kPrenomsFrancais[] = {
    "Éloïse",   "Chloé",    "Gaëlle",  "Noémie",  "Hélène",   "Jérôme",  "François", "Loïc",
    "Maël",     "Anaïs",    "Zoé",     "Théo",    "Léa",      "Clément", "Aurélie",  "Benoît",
    "Cécile",   "Mégane",   "Raphaël", "Joël",    "Adèle",    "Inès",    "Renée",    "Stéphane",
    "Frédéric", "Timothée", "Océane",  "Agnès",   "Gérald",   "Mathéo",  "Éric",     "Émilie",
    "Solène",   "Maëlys",   "Noël",    "Lucie",   "Marc",     "Julien",  "Camille",  "Louise",
    "Hugo",     "Nina",     "Sacha",   "Jules",   "Manon",    "Paul",    "Alice",    "Victor",
    "Clara",    "Tom",      "Lola",    "Yann",    "Margaux",  "Bastien", "Elsa",     "Romain",
    "Jade",     "Axel",     "Lina",    "Maxime",  "Sarah",    "Nicolas", "Juliette", "Antoine",
    "Emma",     "Simon",    "Pauline", "Gaspard", "Léonie",   "Céleste", "Amélie",   "Pénélope",
    "Josèphe",  "Thaïs",    "Aloïs",   "Héloïse", "Bérénice", "Ophélie", "Gaétan",   "Hervé",
};

constexpr const char* kNomsFrancais[] = {
    "Lefèvre",   "Duchêne",  "Moreau",   "Rivière",  "Marchal",  "Bérard",  "Garnier",  "Fontaine",
    "Chevalier", "Rousseau", "Lemaître", "Gauthier", "Perrin",   "Boucher", "Mercier",  "Dupré",
    "Leclerc",   "Lacroix",  "Morel",    "Girard",   "Faure",    "Bonnet",  "Lambert",  "Roux",
    "Vincent",   "Dufresne", "Ménard",   "Chauvin",  "Delaunay", "Prévost", "Hébert",   "Lévêque",
    "Barbier",   "Caron",    "Renaud",   "Brun",     "Masson",   "Aubert",  "Collet",   "Joly",
    "Picard",    "Gaillard", "Carré",    "Dumont",   "Royer",    "Besnard", "Tessier",  "Laurençon",
    "Bézier",    "Château",  "Désiré",   "Frémont",  "Guérin",   "Hérault", "Jouvet",   "Kérouac",
    "Lépine",    "Maréchal", "Noiret",   "Orsini",   "Pécresse", "Quéré",   "Rimbaud",  "Sérafin",
    "Thénard",   "Vallée",   "Wéry",     "Crémieux", "Delœuvre", "Bœuf",    "Faucheux", "Granger",
    "Huguet",    "Imbert",   "Jacquet",  "Lagarde",  "Montagné",
};

constexpr const char* kPrenomsEtrangers[] = {
    "Liam",   "Olivia",  "Noah",     "Amelia", "Ethan",   "Chloe",  "Mason", "Grace",
    "Lucas",  "Ava",     "Oscar",    "Freya",  "Jack",    "Isla",   "Harry", "Sofia",
    "Mateo",  "Lucía",   "Björn",    "Ingrid", "Sven",    "Astrid", "Marco", "Giulia",
    "Diego",  "Camila",  "Kenji",    "Yuna",   "Aaron",   "Nora",   "Caleb", "Maya",
    "Felix",  "Hannah",  "Jonas",    "Lena",   "Rafael",  "Inês",   "Tomás", "Zoë",
    "Declan", "Siobhán", "Santiago", "Ximena", "Joaquín", "Renée",  "Malik", "Amara",
};

constexpr const char* kNomsEtrangers[] = {
    "Carter",    "Hayes",     "Brooks",   "Walsh",   "Reyes",     "Costa",    "Nakamura",
    "Lindqvist", "Novák",     "Andersen", "Rossi",   "Fernández", "Jensen",   "O'Connor",
    "Müller",    "García",    "Silva",    "Johnson", "Kowalski",  "Dalton",   "Ellison",
    "Foster",    "Gallagher", "Hudson",   "Irving",  "Keller",    "Lowell",   "Monroe",
    "Nolan",     "Parker",    "Quinn",    "Ramírez", "Santos",    "Turner",   "Underwood",
    "Vargas",    "Whitaker",  "Young",    "Åberg",   "Håkansson", "Sørensen", "Nyström",
    "Bianchi",   "Moretti",   "Schäfer",  "Vogel",   "Duarte",    "Ibáñez",
};

constexpr const char* kNomsDeScene[] = {
    "Zélie",  "Mélodie", "Kaëlle",  "Néon",    "Orphée",  "Aïko",  "Soléa",  "Zazou",
    "Ondine", "Maëva",   "Pixel",   "Sélène",  "Azur",    "Cosmo", "Lunaé",  "Nébuleuse",
    "Rhéa",   "Élixir",  "Kalypso", "Vénus B", "Mistral", "Noé K", "Saphir", "Zéphyr",
    "Aurore", "Boréal",  "Célia L", "Démon D", "Écho",    "Fauve", "Gemma",  "Hélios",
};

constexpr const char* kGroupesFrancais[] = {
    "Les Hirondelles",      "Les Cerfs-Volants",  "Les Marées Hautes",  "Les Étoiles Filantes",
    "Les Frères Moulin",    "Les Demoiselles",    "Les Pavés Mouillés", "Les Lucioles",
    "Les Garçons d'Opale",  "Les Voyageurs",      "Les Fous du Phare",  "Les Cœurs Sauvages",
    "Les Passagers",        "Les Nuits Blanches", "Les Ricochets",      "Les Sœurs Lumière",
    "Orchestre du Beffroi", "Trio Céleste",       "Quatuor Marée",      "Fanfare des Dunes",
};

constexpr const char* kGroupesEtrangers[] = {
    "The Velvet Owls",   "Midnight Harbour",   "The Paper Kites",  "Silver Lanterns",
    "The Northern Band", "Glass Animals Club", "Electric Tide",    "The Sunday Drivers",
    "Neon Orchard",      "The Quiet Storms",   "Blue Meridian",    "Coastline Radio",
    "The Hollow Pines",  "Golden Ratio",       "Satellite Hearts", "The Wandering Foxes",
    "Crimson Avenue",    "Atlas & Moon",       "The Lighthouse",   "Starling City",
};

constexpr const char* kDebutsTitreFrancais[] = {
    "L'été",        "Mon cœur",   "La fenêtre",    "Un rêve",       "Ça ira",
    "Là-bas",       "Déjà",       "La sérénade",   "Le château",    "Naïve",
    "Où tu vas",    "Les âmes",   "La forêt",      "Les étoiles",   "Tes yeux",
    "Le garçon",    "La fille",   "Mes souvenirs", "L'hôtel",       "Le café",
    "Les vagues",   "Ma chanson", "La côte",       "Le silence",    "Ton prénom",
    "Les saisons",  "La lumière", "Le train",      "Les œillets",   "La fête",
    "Reste encore", "Danse",      "Écoute",        "Regarde-moi",   "Promets-moi",
    "Il pleut",     "Demain",     "Si tu savais",  "Quand tu pars", "Sous la pluie",
};

constexpr const char* kFinsTitreFrancais[] = {
    "",
    " en août",
    " en hiver",
    " d'automne",
    " à Paris",
    " de Lille",
    " sans toi",
    " pour toujours",
    " à l'aube",
    " de minuit",
    " pour l'éternité",
    " qui s'en va",
    " du dimanche",
    " au soleil",
    " sur la plage",
    " en plein cœur",
    " à l'envers",
    " d'antan",
    " de la mer",
    " près de toi",
    " en été",
    " à la française",
    " un peu",
    " ce soir",
    " à deux",
    " à moitié",
    " là-haut",
    " de Noël",
    " sans fin",
    " d'avant",
};

constexpr const char* kTitresFrancaisLongs[] = {
    "Je t'écrirai des lettres que tu ne liras jamais",
    "La dernière chanson avant la fin de l'été indien",
    "Quand les étoiles s'éteignent au-dessus de la mer du Nord",
    "Il était une fois un garçon qui rêvait d'océans",
    "Ma grand-mère chantait ça dans sa cuisine à Noël",
    "Tout ce que je n'ai jamais osé te dire à voix haute",
    "Les lumières de la ville ne brillent plus comme avant",
    "On s'était promis de se revoir au printemps prochain",
};

constexpr const char* kDebutsTitreEtranger[] = {
    "Lost",    "Golden",  "Midnight", "Running", "Dancing",  "Falling", "Electric",
    "Wild",    "Summer",  "Broken",   "Shining", "Paper",    "Silver",  "Chasing",
    "Crazy",   "Endless", "Hold",     "Sweet",   "Lonely",   "Brave",   "Neon",
    "Forever", "Higher",  "Stay",     "Take Me", "Bring Me", "Tell Me", "Walking",
};

constexpr const char* kFinsTitreEtranger[] = {
    "",          " Love",  " Heart",   " Nights",     " in the Rain", " Home",    " Dreams",
    " Lights",   " Away",  " Tonight", " to the Sea", " Forever",     " on Fire", " Together",
    " in Paris", " Stars", " Again",   " Sky",        " Wonderland",  " Highway", " on the Radio",
    " Down",     " Back",  " Shadows", " Sunrise",
};

constexpr const char* kTitresInstrumentaux[] = {
    "Prélude", "Nocturne",     "Variations",   "Interlude", "Rêverie",
    "Aube",    "Crépuscule",   "Sérénité",     "Mouvement", "Étude",
    "Horizon", "Brise marine", "Clair-obscur", "Pavane",    "Odyssée",
};

constexpr const char* kSuffixesVersion[] = {
    " (version acoustique)",  " (radio edit)",     " (remix club)", " (live)",
    " (version orchestrale)", " (version longue)", " (duo)",        " (version piano)",
};

constexpr const char* kJingles[] = {
    "Jingle identifiant station",
    "Jingle météo",
    "Jingle info trafic",
    "Jingle matinale",
    "Jingle hits",
    "Jingle nouveauté",
    "Jingle week-end",
    "Jingle soirée",
    "Jingle agenda",
    "Jingle jeu antenne",
    "Jingle fréquence",
    "Jingle top horaire",
};

constexpr const char* kLiners[] = {
    "Liner le meilleur de la musique", "Liner que des tubes",   "Liner 100 % chansons",
    "Liner votre radio régionale",     "Liner plus de musique", "Liner les nouveautés",
    "Liner les hits d'hier",           "Liner bonne journée",   "Liner nuit douce",
    "Liner réveil en musique",         "Liner en direct",       "Liner côté musique",
};

constexpr const char* kLabels[] = {
    "Disques Mistral",      "Azur Musique",        "Label Hirondelle", "Éditions Sonores",
    "Studio Lumière",       "Bleu Nuit Records",   "Polaris Music",    "Vinyle et Cie",
    "Les Disques du Phare", "Orage Productions",   "Maison Écho",      "Cerise Records",
    "Nord Audio",           "Atlantique Musique",  "Prisme Disques",   "Mélopée",
    "Sillon d'Or",          "Onde Courte",         "Galaxie Disques",  "Marée Basse Records",
    "Harbour Sound",        "Redwood Music Group", "Skyline Records",  "Kestrel Recordings",
};

constexpr const char* kCommerciaux[] = {
    "Hélène Marchand", "Grégoire Lefèbvre", "Séverine Duval", "Jérémy Caron",
    "Anaïs Berthier",  "Benoît Crémieux",   "Maëlle Rivière", "François Ménard",
};

constexpr Secteur kSecteurs[] = {
    {"AUTO", "Automobile"},
    {"DISTRIB", "Grande distribution"},
    {"IMMO", "Immobilier"},
    {"BANQUE", "Banque et assurance"},
    {"RESTO", "Restauration"},
    {"SANTE", "Santé et bien-être"},
    {"LOISIRS", "Loisirs et culture"},
    {"MODE", "Mode et beauté"},
    {"HABITAT", "Habitat et décoration"},
    {"EVENT", "Événementiel"},
    {"SERVICES", "Services aux particuliers"},
    {"COLLECT", "Collectivités"},
};

constexpr Enseigne kEnseignes[] = {
    {"Garage", 0},
    {"Automobiles", 0},
    {"Hypermarché", 1},
    {"Supérette", 1},
    {"Agence immobilière", 2},
    {"Crédit Régional", 3},
    {"Assurances", 3},
    {"Brasserie", 4},
    {"Boulangerie", 4},
    {"Pâtisserie", 4},
    {"Pharmacie", 5},
    {"Optique", 5},
    {"Cinéma", 6},
    {"Théâtre", 6},
    {"Boutique", 7},
    {"Coiffure", 7},
    {"Meubles", 8},
    {"Cuisines", 8},
    {"Salon", 9},
    {"Festival", 9},
    {"Pressing", 10},
    {"Auto-école", 10},
    {"Mairie de", 11},
    {"Office de tourisme de", 11},
};

constexpr const char* kNomsEnseigne[] = {
    "Lefèvre",      "du Beffroi",   "Côte d'Opale", "Gaëtan",        "Sérénité",
    "des Flandres", "Château",      "du Port",      "Mélanie",       "Bellevue",
    "Saint-Éloi",   "des Dunes",    "Du Théâtre",   "Noëlle",        "des Remparts",
    "Marché Neuf",  "Les Tilleuls", "Étoile",       "du Boulonnais", "Hérisson",
    "Boréal",       "Pôle Nord",    "de la Gare",   "Grand'Place",   "du Canal",
};

constexpr const char* kAccroches[] = {
    "Soldes d'été : -30 % sur tout",
    "Portes ouvertes ce week-end",
    "Nouvelle carte d'automne",
    "Offre spéciale fête des pères",
    "Crédit auto à taux réduit",
    "Ouvert le dimanche matin",
    "Déstockage exceptionnel",
    "Le goût de la région",
    "Vos lunettes à 1 €",
    "Réservez dès maintenant",
    "Grand jeu : gagnez un séjour",
    "Rentrée : tout pour l'école",
    "Les galettes des rois sont là",
    "Printemps des saveurs",
    "Spécial Noël : idées cadeaux",
    "Journée découverte gratuite",
    "Fête de la musique : concert",
    "Votre électricité moins chère",
    "Essai gratuit tout le mois",
    "Prêt immobilier : étude offerte",
};

constexpr const char* kCampagnes[] = {
    "Lancement produit", "Notoriété",       "Opération spéciale",
    "Parrainage météo",  "Événement local", "Fidélisation",
};

// Seasonal campaign of each month, January first.
constexpr const char* kCampagnesSaison[] = {
    "Soldes d'hiver",        "Galette et Chandeleur", "Campagne de printemps",
    "Campagne de printemps", "Fête des mères",        "Campagne d'été",
    "Soldes d'été",          "Campagne d'été",        "Campagne de rentrée",
    "Campagne d'automne",    "Campagne d'automne",    "Fêtes de fin d'année",
};

constexpr const char* kVilles[] = {"Lille",      "Arras",   "Boulogne", "Calais", "Dunkerque",
                                   "Saint-Omer", "Béthune", "Lens",     "Douai",  "Valenciennes"};
constexpr const char* kVillesReference[] = {"LILLE",     "ARRAS",       "BOULOGNE", "CALAIS",
                                            "DUNKERQUE", "SAINT-OMER",  "BETHUNE",  "LENS",
                                            "DOUAI",     "VALENCIENNES"};

}  // namespace

Liste PrenomsFrancais() {
    return kPrenomsFrancais;
}
Liste NomsFrancais() {
    return kNomsFrancais;
}
Liste PrenomsEtrangers() {
    return kPrenomsEtrangers;
}
Liste NomsEtrangers() {
    return kNomsEtrangers;
}
Liste NomsDeScene() {
    return kNomsDeScene;
}
Liste GroupesFrancais() {
    return kGroupesFrancais;
}
Liste GroupesEtrangers() {
    return kGroupesEtrangers;
}
Liste DebutsTitreFrancais() {
    return kDebutsTitreFrancais;
}
Liste FinsTitreFrancais() {
    return kFinsTitreFrancais;
}
Liste TitresFrancaisLongs() {
    return kTitresFrancaisLongs;
}
Liste DebutsTitreEtranger() {
    return kDebutsTitreEtranger;
}
Liste FinsTitreEtranger() {
    return kFinsTitreEtranger;
}
Liste TitresInstrumentaux() {
    return kTitresInstrumentaux;
}
Liste SuffixesVersion() {
    return kSuffixesVersion;
}
Liste Jingles() {
    return kJingles;
}
Liste Liners() {
    return kLiners;
}
Liste Labels() {
    return kLabels;
}
Liste Commerciaux() {
    return kCommerciaux;
}
std::span<const Secteur> Secteurs() {
    return kSecteurs;
}
std::span<const Enseigne> Enseignes() {
    return kEnseignes;
}
Liste NomsEnseigne() {
    return kNomsEnseigne;
}
Liste Accroches() {
    return kAccroches;
}
Liste Campagnes() {
    return kCampagnes;
}
const char* CampagneDeSaison(int mois) {
    return kCampagnesSaison[(mois + 11) % 12];
}
Liste Villes() {
    return kVilles;
}
Liste VillesReference() {
    return kVillesReference;
}

}  // namespace zl3::demo::voc
