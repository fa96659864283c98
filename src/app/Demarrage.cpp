#include "Demarrage.h"

#include "Etat.h"
#include "Lib_Config.h"
#include "Lib_Public.h"
#include "Lib_Systeme.h"
#include "LigneCommande.h"
#include "Services.h"

namespace zl3 {

bool InitGeneral(const std::string& ligneCommande) {
    const std::string identity = "Frm_Main:InitGeneral";
    TraceProc(identity);
    bool ok = true;
    try {
        EtatApplication& etat = Etat();
        if (!etat.chronoDemarrage) etat.chronoDemarrage = Svc().clock->Stopwatch();
        etat.ligneCommande = ligneCommande;
        if (!Trim(ligneCommande).empty()) AnalyseChaineCommand(ligneCommande);

        TraceLog("FrmMain: Init General: Start");
        TraceLogEncadre("Init: InitGeneralPath");
        ok = DetermineDossierConfig();
        TraceLogEncadre("Init: InitGeneralSite");
        const Configuration& c = Config();
        if (!c.bases.empty()) {
            SetDossierLog(0, c.bases[0].dossiers[kRepLog]);
            TraceLog("Site: " + c.nomRadio + " | Bases: " + std::to_string(c.nbBase));
        }
        NomDossierSettings();
        TraceLog("FrmMain: Init General: End");
        TraceLogForce();
    } catch (const std::exception& e) {
        TraceErreur(identity, 0, e.what());
        ok = false;
    }
    return ok;
}

std::string ResumeConfiguration() {
    const Configuration& c = Config();
    std::string s;
    s += "Radio:                 " + c.nomRadio + "\n";
    s += "Win.ini:               " + c.fichierWinIni + "\n";
    s += std::string("Mode:                  ") + (c.uncActif ? "réseau (UNC)" : "local") + "\n";
    s += "Dossier de config:     " + c.dossierConfigGlobal + "\n";
    s += "Copie de la config:    " + c.fichierConfig + "\n";
    s += "Dossier des réglages:  " + c.dossierSettings + "\n";
    s += "Bases:                 " + std::to_string(c.nbBase) + "\n";
    for (size_t b = 0; b < c.bases.size(); ++b) {
        const ConfigBase& base = c.bases[b];
        s += "  Base " + Deux(static_cast<int>(b + 1)) + ": " + base.lib + " (" +
             base.dossierConfig + ")\n";
        for (size_t st = 0; st < base.stations.size(); ++st)
            s += "    Station " + Deux(static_cast<int>(st + 1)) + ": " + base.stations[st].lib +
                 "\n";
        for (int d = 0; d < kNbDossiersBase; ++d) {
            const std::string& dossier = base.dossiers[d];
            s += std::string("    ") + CalibreTexte(TableDossiers()[d].cleCopie, 20) + dossier +
                 (sys::FolderExists(dossier) ? "" : "  (absent)") + "\n";
        }
    }
    s += "Journal du jour:       " + FichierLogDuJour() + "\n";
    return s;
}

}  // namespace zl3
