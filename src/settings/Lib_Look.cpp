#include "Lib_Look.h"

#include <cctype>
#include <exception>

#include "EcritureReglages.h"
#include "Lib_Config.h"
#include "Lib_Profile.h"
#include "Lib_Public.h"
#include "Lib_Settings.h"
#include "Lib_Systeme.h"

namespace zl3 {
namespace {

constexpr const char* kModule = "Lib_Look:";

constexpr std::array<int32_t, kNbCouleursPalette> kPalette = {
    RGBCouleur(240, 0, 0),     RGBCouleur(192, 0, 48),    RGBCouleur(144, 0, 96),
    RGBCouleur(96, 0, 144),    RGBCouleur(48, 0, 192),    RGBCouleur(0, 0, 240),
    RGBCouleur(0, 48, 192),    RGBCouleur(238, 242, 245), RGBCouleur(159, 174, 190),
    RGBCouleur(255, 255, 255), RGBCouleur(0, 0, 0),       RGBCouleur(0, 96, 144),
    RGBCouleur(0, 144, 96),    RGBCouleur(0, 192, 48),    RGBCouleur(0, 240, 0),
    RGBCouleur(0, 0, 0),       RGBCouleur(251, 230, 200), RGBCouleur(203, 219, 227),
    RGBCouleur(48, 192, 48),   RGBCouleur(218, 0, 12),    RGBCouleur(96, 144, 96),
    RGBCouleur(144, 96, 144),  RGBCouleur(192, 48, 192),  RGBCouleur(240, 0, 240),
    RGBCouleur(240, 48, 240),  RGBCouleur(240, 96, 240),  RGBCouleur(240, 144, 240),
    RGBCouleur(240, 192, 240), RGBCouleur(240, 240, 240), RGBCouleur(240, 240, 192),
    RGBCouleur(240, 240, 144), RGBCouleur(240, 240, 96),  RGBCouleur(177, 216, 97),
    RGBCouleur(240, 240, 48),  RGBCouleur(240, 240, 0),   RGBCouleur(240, 192, 0),
    RGBCouleur(0, 0, 0),       RGBCouleur(183, 221, 253), RGBCouleur(70, 130, 180),
    RGBCouleur(0, 0, 0),       RGBCouleur(0, 0, 0),       RGBCouleur(44, 44, 44),
    RGBCouleur(113, 160, 199), RGBCouleur(205, 255, 0),   RGBCouleur(80, 253, 3),
    RGBCouleur(0, 0, 0),       RGBCouleur(0, 0, 0),       RGBCouleur(247, 187, 22),
    RGBCouleur(0, 0, 0),       RGBCouleur(247, 187, 122),
};

constexpr std::array<const char*, kNbCouleursGrille> kCles = {
    "TV_Fond",       "TV_Texte",        "Selection_Texte", "Selection_Fond",       "Promo_Texte",
    "Promo_Fond",    "SpotLocal_Fond",  "SpotLocal_Texte", "Non_Enregistre_Texte", "SpotGIE_Fond",
    "RupHeu_Texte",  "RupHeu_Fond",     "SpotGIE_Texte",   "Jingle_Texte",         "Jingle_Fond",
    "RupEcr_Texte",  "RupEcr_Fond",     "MultiVille_Fond", "MultiVille_Texte",     "Comblage_Texte",
    "Comblage_Fond", "Editorial_Texte", "Editorial_Fond",
};

constexpr std::array<int, kNbCouleursGrille> kIndex = {
    7, 8, 9, 10, 15, 16, 17, 36, 19, 37, 38, 39, 32, 41, 42, 40, 43, 44, 45, 46, 47, 48, 49,
};

std::string CleProduit(int index) {
    return "Idx_" + Deux(index);
}

bool EgalSansCasse(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// A colour key: a non-number reads as 0 (black), a value beyond 24 bits keeps the default.
int32_t LitCouleur(const std::string& section, const std::string& cle, int32_t defaut,
                   const std::string& fichier) {
    const long c = LitNombre(section, cle, defaut, fichier);
    return c >= 0 && c <= 0xFFFFFF ? static_cast<int32_t>(c) : defaut;
}

}  // namespace

int32_t DefaultColor(int index) {
    return index >= 0 && index < kNbCouleursPalette ? kPalette[index] : kNoir;
}

bool EstIndexCategorie(int index) {
    return (index >= 0 && index <= 6) || (index >= 11 && index <= 14) || index == 18 ||
           (index >= 20 && index <= 31) || (index >= 33 && index <= 35);
}

const std::array<const char*, kNbCouleursGrille>& ClesCouleursGrille() {
    return kCles;
}
const std::array<int, kNbCouleursGrille>& IndexCouleursGrille() {
    return kIndex;
}

const std::vector<std::string>& ListeStylesLook() {
    static const std::vector<std::string> styles = {"Classique", "Visual + focus", "Visuel"};
    return styles;
}

SettingsLook::SettingsLook() {
    for (int i = 0; i < kNbCouleursGrille; ++i)
        couleurs[i] = DefaultColor(kIndex[i]);
    for (int i = 0; i < kNbCouleursPalette; ++i)
        couleursProduits[i] = DefaultColor(i);
}

SettingsLook InitSettingsLook() {
    const std::string identite = std::string(kModule) + "InitSettingsLook";
    TraceProc(identite);
    SettingsLook s;
    try {
        const std::string f = FichierSettings();
        for (int i = 0; i < kNbCouleursGrille; ++i)
            s.couleurs[i] = LitCouleur("Couleur", kCles[i], s.couleurs[i], f);
        for (int i = 0; i < kNbCouleursPalette; ++i)
            s.couleursProduits[i] =
                LitCouleur("CouleurProduit", CleProduit(i), s.couleursProduits[i], f);
        const long apparence = LitNombre("Tableur", "Apparence", s.apparence, f);
        if (apparence >= 0 && apparence < kNbStylesLook) s.apparence = static_cast<int>(apparence);
        s.affTitre = LitDrapeau("General_Out", "AffTitre", s.affTitre, f);
        s.affArtiste = LitDrapeau("General_Out", "AffArtiste", s.affArtiste, f);
        s.ongletHeure = LitDrapeau("FenetrePrincipale", "OngletHeure", s.ongletHeure, f);
        const long taille = LitNombre("ListeTV", "TaillePolice", s.taillePolice, f);
        if (taille >= 1 && taille <= 72) s.taillePolice = static_cast<int>(taille);
        s.nomPolice = ReadProfileString("ListeTV", "NomPolice", s.nomPolice, f);
        s.fontBold = LitDrapeau("ListeTV", "FontBold", s.fontBold, f);
        s.nomPoliceConducteur =
            ReadProfileString("Conducteur", "NomPolice", s.nomPoliceConducteur, f);
        s.hauteurDouble = LitDrapeau("Heure", "HauteurDouble", s.hauteurDouble, f);
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
    }
    return s;
}

bool SaveSettingsLook(const SettingsLook& s) {
    const std::string identite = std::string(kModule) + "SaveSettingsLook";
    TraceProc(identite);
    reglages::Ecriture w(FichierSettings());
    try {
        for (int i = 0; i < kNbCouleursGrille; ++i)
            w.Nombre("Couleur", kCles[i], s.couleurs[i]);
        for (int i = 0; i < kNbCouleursPalette; ++i)
            w.Nombre("CouleurProduit", CleProduit(i), s.couleursProduits[i]);
        w.Nombre("Tableur", "Apparence", s.apparence);
        w.Drapeau("General_Out", "AffTitre", s.affTitre);
        w.Drapeau("General_Out", "AffArtiste", s.affArtiste);
        w.Drapeau("FenetrePrincipale", "OngletHeure", s.ongletHeure);
        w.Nombre("ListeTV", "TaillePolice", s.taillePolice);
        w.Texte("ListeTV", "NomPolice", s.nomPolice);
        w.Drapeau("ListeTV", "FontBold", s.fontBold);
        w.Texte("Conducteur", "NomPolice", s.nomPoliceConducteur);
        w.Drapeau("Heure", "HauteurDouble", s.hauteurDouble);
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
        w.Echec();
    }
    return w.Fin(identite);
}

void CommandRAZCouleurs(SettingsLook& look) {
    for (int i = 0; i < kNbCouleursGrille; ++i)
        look.couleurs[i] = DefaultColor(kIndex[i]);
    for (int i = 0; i < kNbCouleursPalette; ++i)
        if (EstIndexCategorie(i)) look.couleursProduits[i] = DefaultColor(i);
}

std::string PoliceOfferte(const std::string& nomStocke, const std::vector<std::string>& offertes) {
    const std::string nom = Trim(nomStocke);
    for (const std::string& p : offertes)
        if (EgalSansCasse(p, nom)) return p;
    return kPoliceDeSecours;
}

LookGeneral CalculeLook(const SettingsLook& look, const std::vector<std::string>& policesOffertes,
                        bool themeClassique) {
    LookGeneral g;
    g.style = themeClassique ? 0 : look.apparence;
    if (g.style < 0 || g.style >= kNbStylesLook) g.style = 2;
    g.libelleStyle = ListeStylesLook()[g.style];
    g.policeListes = PoliceOfferte(look.nomPolice, policesOffertes);
    g.taillePolice = look.taillePolice;
    g.gras = look.fontBold;
    g.policeConducteur = PoliceOfferte(look.nomPoliceConducteur, policesOffertes);
    g.hauteurDouble = look.hauteurDouble;
    g.affTitre = look.affTitre;
    g.affArtiste = look.affArtiste;
    g.ongletHeure = look.ongletHeure;
    g.couleurs = look.couleurs;
    g.couleursProduits = look.couleursProduits;
    return g;
}

LookGeneral InitGeneralLook(const std::vector<std::string>& policesOffertes) {
    const std::string identite = std::string(kModule) + "InitGeneralLook";
    TraceProc(identite);
    try {
        return CalculeLook(InitSettingsLook(), policesOffertes, sys::ThemeActive() == "0");
    } catch (const std::exception& e) {
        TraceErreur(identite, 0, e.what());
        return CalculeLook(SettingsLook{}, policesOffertes, false);
    }
}

}  // namespace zl3
