#include "ReleveDroits.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "Cls_WMATag.h"
#include "Lib_Config.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Public.h"
#include "Lib_Stats.h"
#include "Lib_Systeme.h"
#include "Services.h"

namespace zl3 {
namespace {

const char* kOrigine = "ReleveDroits:EtablirReleveDroits";

// The track's file in the folders, "<key>.wma" in any case of the extension.
std::string FichierDuMorceau(const std::vector<std::string>& dossiers, const std::string& cle) {
    namespace fs = std::filesystem;
    for (const std::string& d : dossiers)
        for (const char* ext : {".wma", ".WMA", ".Wma"}) {
            const fs::path p = sys::CheminFs(d) / sys::CheminFs(cle + ext);
            std::error_code ec;
            if (fs::is_regular_file(p, ec)) return sys::TexteChemin(p);
        }
    return {};
}

}  // namespace

std::vector<std::string> DossiersSonsMusique(int base) {
    std::vector<std::string> dossiers;
    const Configuration& config = Config();
    if (base < 1 || base > static_cast<int>(config.bases.size())) return dossiers;
    for (const std::string& d : config.bases[static_cast<size_t>(base - 1)].dossiersSons[0])
        if (!d.empty()) dossiers.push_back(d);
    return dossiers;
}

std::string NomFichierReleve(int station, int annee, int semestre) {
    return "ZL3_Releve_Droits_Station_" + std::to_string(station) + "_" + PadNumber(annee, 4) +
           "_S" + std::to_string(semestre);
}

ReleveDroits EtablirReleveDroits(const ParametresReleve& p) {
    ReleveDroits r;
    if (p.semestre < 1 || p.semestre > 2 || p.annee < 2000 || p.annee > 2200) {
        r.erreurs.push_back("Semestre incorrect");
        return r;
    }
    r.debut = DateTime{p.annee, p.semestre == 1 ? 1 : 7, 1, 0, 0, 0, 0};
    r.fin = DateTime{p.annee, p.semestre == 1 ? 6 : 12, p.semestre == 1 ? 30 : 31, 0, 0, 0, 0};
    const DateTime maintenant =
        p.maintenant ? *p.maintenant : Svc().clock ? Svc().clock->Now() : SystemClock().Now();
    const int64_t debut = InstantDe(r.debut);
    const int64_t fin = InstantDe(AddDays(r.fin, 1));  // excluded
    if (InstantDe(maintenant) < debut) {
        r.erreurs.push_back("Le semestre n'a pas commencé");
        return r;
    }
    TraceProc(kOrigine);
    EffaceIncidentsBTrieve();
    const FichiersLus noms(p.source, p.station, {kFichierArtistes, kFichierAttributs});
    DiffusionsMusique lu = LireDiffusionsMusique(p.source, p.station, debut, p.arret, kOrigine);
    if (!lu.lisible) {
        r.erreurs.push_back(lu.texteSource);
        return r;
    }
    r.source = lu.source;
    r.texteSource = lu.texteSource;
    std::map<int, long long> passages;
    for (const DiffusionMusique& d : lu.diffusions)
        if (d.instant >= debut && d.instant < fin) ++passages[d.morceau];

    for (const auto& [m, n] : passages) {
        const MorceauMusique& mm = lu.morceaux[static_cast<size_t>(m)];
        LigneReleve l;
        l.cle = mm.cle;
        l.titre = mm.titre;
        l.artistes = Trim(LibArtiste(p.source, p.station, mm.codeArtiste1, mm.codeArtiste2, true));
        l.duree = mm.duree > 0 ? Tps2MinSec(mm.duree) : "";
        l.label = LibLabel(p.source, p.station, mm.codeLabel);
        l.passages = n;
        const std::string fichier = FichierDuMorceau(p.dossiersSons, mm.cle);
        std::vector<std::string> manquants;
        if (fichier.empty()) {
            manquants.push_back("fichier " + mm.cle + ".wma introuvable dans les dossiers de "
                                "sons musicaux");
        } else {
            Cls_WMATag tags;
            tags.SetFilename(fichier);
            if (!tags.ReadWMATags()) {
                manquants.push_back("fichier " + fichier + " illisible");
            } else {
                l.auteurs = Trim(tags.TagByDescriptor("WM/Writer"));
                l.compositeurs = Trim(tags.TagByDescriptor("WM/Composer"));
                l.isrc = Trim(tags.TagByDescriptor("WM/ISRC"));
                l.editeur = Trim(tags.TagByDescriptor("WM/Publisher"));
                if (l.auteurs.empty()) manquants.push_back("WM/Writer");
                if (l.compositeurs.empty()) manquants.push_back("WM/Composer");
                if (l.isrc.empty()) manquants.push_back("WM/ISRC");
            }
        }
        if (!manquants.empty()) {
            std::string texte = "Morceau " + mm.cle + " (" + mm.titre + "): ";
            for (size_t i = 0; i < manquants.size(); ++i)
                texte += (i ? ", " : "") + manquants[i];
            Incident inc;
            inc.quand = maintenant;
            inc.station = p.station;
            inc.genre = GenreIncident::TagsManquants;
            inc.texte = texte;
            inc.cle = mm.cle;
            r.incidents.push_back(inc);
        }
        r.lignes.push_back(std::move(l));
    }
    std::stable_sort(r.lignes.begin(), r.lignes.end(),
                     [](const LigneReleve& a, const LigneReleve& b) {
                         if (a.passages != b.passages) return a.passages > b.passages;
                         if (a.titre != b.titre) return a.titre < b.titre;
                         return a.cle < b.cle;
                     });
    const auto& erreurs = IncidentsBTrieve();
    r.erreurs.insert(r.erreurs.end(), erreurs.begin(), erreurs.end());
    if (lu.arretee) r.erreurs.push_back("Recherche interrompue");
    r.incomplete = !r.erreurs.empty();
    r.effectue = true;
    TraceLog("Releve droits: " + std::to_string(r.lignes.size()) + " morceaux, " +
             std::to_string(r.incidents.size()) + " incident(s)");
    return r;
}

void RemplirGrilleReleve(const ReleveDroits& r, Grid& g) {
    const char* entetes[] = {"Titre",  "Durée", "Artiste", "Auteurs", "Compositeurs",
                             "ISRC",   "Editeur", "Label", "Passages"};
    g = Grid(9, static_cast<int>(r.lignes.size()));
    g.SetColHeader(0, 0, "Id");
    for (int c = 1; c <= 9; ++c)
        g.SetColHeader(0, c, entetes[c - 1]);
    g.SetGenre(9, GenreColonne::Nombre);
    for (size_t i = 0; i < r.lignes.size(); ++i) {
        const int row = static_cast<int>(i + 1);
        const LigneReleve& l = r.lignes[i];
        g.SetRowHeader(0, row, l.cle);
        const std::string textes[] = {l.titre, l.duree,   l.artistes, l.auteurs,
                                      l.compositeurs, l.isrc, l.editeur, l.label,
                                      std::to_string(l.passages)};
        for (int c = 1; c <= 9; ++c)
            g.SetText(c, row, textes[c - 1]);
    }
    if (r.incomplete) g.SetWarning("Rapport incomplet");
}

}  // namespace zl3
