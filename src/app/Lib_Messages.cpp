#include "Lib_Messages.h"

#include <map>
#include <utility>

#include "Lib_Public.h"
#include "Services.h"

namespace zl3 {
namespace {

using Key = std::pair<std::string, int>;

// The rows of the suite's label catalogue that this tool shows.
const std::map<Key, std::string>& Catalogue() {
    static const std::map<Key, std::string> table = {
        {{"Droits", 0}, "Droits"},
        {{"Droits", 1}, "Accès refusé"},
        {{"Droits", 2}, "Vous n'avez pas les droits suffisants pour cette opération"},
        {{"Internet", 0}, "Connexion"},
        {{"Internet", 1}, "Serveur"},
        {{"Internet", 2}, "Utilisateur"},
        {{"Internet", 3}, "Mot de passe"},
        {{"Internet", 4}, "Dossier"},
        {{"Internet", 5}, "Mode passif"},
        {{"Internet", 6}, "Envoyer"},
        {{"Internet", 7}, "Recevoir"},
        {{"Internet", 8}, "Fichier"},
        {{"Internet", 9}, "Date: Web"},
        {{"Internet", 10}, "Taille: Web"},
        {{"Internet", 11}, "Date: Local"},
        {{"Internet", 12}, "Taille: Local"},
        {{"Menu", 0}, "Fichier"},
        {{"Menu", 1}, "Quitter"},
        {{"Menu", 2}, "Options"},
        {{"Menu", 10},
         "L'erreur 372 se produit lorsque vous voulez ouvrir trop de fenêtres. Fermez quelques "
         "fenêtres"},
        {{"Setup", 0}, "Paramètres"},
        {{"Setup", 1}, "Enregistrer"},
        {{"Setup", 2}, "Annuler"},
        {{"Jour", 1}, "Lundi"},
        {{"Jour", 2}, "Mardi"},
        {{"Jour", 3}, "Mercredi"},
        {{"Jour", 4}, "Jeudi"},
        {{"Jour", 5}, "Vendredi"},
        {{"Jour", 6}, "Samedi"},
        {{"Jour", 7}, "Dimanche"},
        {{"Divers00", 0}, "Oui"},
        {{"Divers00", 1}, "Non"},
        {{"Divers02", 0}, "Contrat:"},
        {{"Divers02", 1}, "Date de début"},
        {{"Divers02", 2}, "Produit"},
        {{"Divers02", 3}, "Commercial"},
        {{"Divers02", 4}, "Exclusions"},
        {{"Divers06", 0}, "Général"},
        {{"Divers06", 1}, "Son"},
        {{"Divers06", 2}, "Evénement"},
        {{"Divers06", 3}, "Pub"},
        {{"Divers06", 4}, "Horloge"},
        {{"Divers08", 0}, "Titre"},
        {{"Divers08", 1}, "Artiste"},
        {{"Divers08", 2}, "Catégorie"},
        {{"Divers08", 3}, "Sujet"},
    };
    return table;
}

int& NextBoxId() {
    static int id = 0;
    return id;
}

}  // namespace

std::string Libelle_Fra(const std::string& group, int index) {
    const auto& table = Catalogue();
    const auto it = table.find({group, index});
    if (it != table.end()) return it->second;
    return "???:" + group + ":" + std::to_string(index) + ":???";
}

int AffMsg(const std::string& text, const std::string& title, int style) {
    const int id = ++NextBoxId();
    const bool multiLine = text.find('\n') != std::string::npos;
    TraceLog("FrmMsgBox: " + (multiLine ? "[" + text + "]" : text) + " |Id:" + std::to_string(id));
    int answer = CloseButtonAnswer(style);
    try {
        MessageBoxUi* ui = Svc().messages;
        if (ui) answer = ui->Show(MessageRequest{text, title, style});
    } catch (...) {
        TraceLog("Err: FrmMsgBox: Id:" + std::to_string(id));
        answer = CloseButtonAnswer(style);
    }
    TraceLog("FrmMsgBox: Id:" + std::to_string(id) + " closed");
    return answer;
}

int Question(const std::string& text, const std::string& title, int style) {
    return AffMsg(Trim(text), title, style);
}

}  // namespace zl3
