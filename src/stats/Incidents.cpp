#include "Incidents.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

#include "Catalogue.h"
#include "Cp1252.h"
#include "Lib_Config.h"
#include "Lib_Data_Pervasive.h"
#include "Lib_Data_Pervasive_2.h"
#include "Lib_Messages.h"
#include "Lib_Public.h"
#include "Lib_Tableur.h"
#include "Services.h"
#include "records/Layouts.h"
#include "records/Passages.h"
#include "records/RecordAccess.h"

namespace zl3 {
namespace {

const char* kOrigine = "Incidents:VerifierDonnees";
constexpr int kFichierClientsPub = kFichierClients;
constexpr int kFichierConducteur = 27;  // FRAD027 advertising running order

struct Libelle {
    GenreIncident genre;
    const char* texte;
};
constexpr Libelle kLibelles[] = {
    {GenreIncident::QuotaInconnu, "Quota inconnu"},
    {GenreIncident::HistoriqueTronque, "Historique tronqué"},
    {GenreIncident::PassageInvalide, "Passage invalide"},
    {GenreIncident::HistoriqueOrphelin, "Historique sans morceau"},
    {GenreIncident::LectureImpossible, "Lecture impossible"},
    {GenreIncident::ClientInconnu, "Client inconnu"},
    {GenreIncident::SpotNonDiffuse, "Spot non diffusé"},
    {GenreIncident::DiffusionHorsConducteur, "Diffusion hors conducteur"},
    {GenreIncident::TagsManquants, "Tags manquants"},
};

// Statuses are collected, never shown, while the check runs; the flag is put back afterwards.
class ErreursCollectees {
  public:
    ErreursCollectees() : avant_(ErreursSilencieuses) { ErreursSilencieuses = true; }
    ~ErreursCollectees() { ErreursSilencieuses = avant_; }

  private:
    bool avant_;
};

// The files of the check, opened for the station under the caller's slot when they are not
// already; those opened here are closed at the end.
class FichiersVerification {
  public:
    FichiersVerification(int source, int station, const std::vector<int>& fichiers)
        : source_(source), station_(station) {
        for (int f : fichiers) {
            if (FichierOuvert(source, station, f)) continue;
            FichierPervasiveOuvrir(source, station, station, f, -2);
            if (FichierOuvert(source, station, f)) ouverts_.push_back(f);
        }
    }
    ~FichiersVerification() {
        for (int f : ouverts_)
            FichierPervasiveFermer(source_, station_, station_, f);
    }

  private:
    int source_;
    int station_;
    std::vector<int> ouverts_;
};

class Verification {
  public:
    explicit Verification(const ParametresVerification& p) : p_(p) {
        debut_ = FormatYYYYMMDD(p.debut);
        fin_ = FormatYYYYMMDD(p.fin);
    }

    BilanVerification Executer() {
        ErreursCollectees silence;
        std::vector<int> fichiers;
        if (p_.musique) fichiers.insert(fichiers.end(), {kFichierMorceaux, kFichierHistorique});
        if (p_.publicite)
            fichiers.insert(fichiers.end(), {kFichierLogPub, kFichierClientsPub, kFichierConducteur});
        FichiersVerification ouverts(p_.source, p_.station, fichiers);
        for (int f : fichiers)
            if (!FichierOuvert(p_.source, p_.station, f))
                Ajouter(GenreIncident::LectureImpossible,
                        "Fichier " + cat::NomFichier(f, p_.station - 1) + " non ouvert",
                        cat::NomFichier(f, p_.station - 1));
        if (p_.musique && Ouvert(kFichierMorceaux) && Ouvert(kFichierHistorique)) {
            Morceaux();
            if (!bilan_.arretee) Historiques();
        }
        if (p_.publicite && !bilan_.arretee && Ouvert(kFichierLogPub)) Publicite();
        return std::move(bilan_);
    }

  private:
    bool Ouvert(int f) const { return FichierOuvert(p_.source, p_.station, f); }

    void Ajouter(GenreIncident genre, const std::string& texte, const std::string& cle) {
        Incident i;
        i.quand = Svc().clock ? Svc().clock->Now() : DateTime{};
        i.station = p_.station;
        i.genre = genre;
        i.texte = texte;
        i.cle = cle;
        bilan_.incidents.push_back(std::move(i));
    }

    // A status other than found, not found and end of file: the record could not be read.
    bool Illisible(int fichier, const std::string& cle) {
        const int s = StatutBTrieve;
        if (s == 0 || s == 4 || s == 9) return false;
        std::string texte = ErreurBTrieveLibelle(s, cat::NomFichier(fichier, p_.station - 1));
        while (!texte.empty() && (texte.back() == '\n' || texte.back() == '\r')) texte.pop_back();
        Ajouter(GenreIncident::LectureImpossible,
                cat::NomFichier(fichier, p_.station - 1) + ": statut " + std::to_string(s) +
                    " (" + texte + ")",
                Trim(Cp1252ToUtf8(cle)));
        return true;
    }

    bool Ceder(int fichier) {
        if (Svc().events) {
            const auto tampon = TamponEnreg(fichier);
            const std::vector<uint8_t> sauvegarde(tampon.begin(), tampon.end());
            Svc().events->DoEvents();
            std::copy(sauvegarde.begin(), sauvegarde.end(), tampon.begin());
        }
        if (p_.arret && p_.arret()) bilan_.arretee = true;
        return bilan_.arretee;
    }

    void Morceaux() {
        namespace m = rec::Morceau;
        const std::string haute = "999" + std::string(5, '\xFF');
        std::string cle = "000" + std::string(5, '\0');
        int16_t op = kBtrGetGreaterOrEqual;
        for (;;) {
            BTRieve(p_.source, op, cle, 0, kFichierMorceaux, p_.station, kOrigine);
            op = kBtrGetNext;
            if (StatutBTrieve != 0) {
                Illisible(kFichierMorceaux, cle);
                break;
            }
            if (cle > haute) break;
            if (++bilan_.morceauxLus % 20 == 0 && Ceder(kFichierMorceaux)) break;
            const auto morceau = TamponEnreg(kFichierMorceaux);
            const std::string cleMorceau = rec::GetBytes(morceau, m::CleMorceau);
            const char flag = static_cast<char>(morceau[m::QuotaFlag.offset]);
            Historique(cleMorceau, flag);
        }
    }

    void Historique(const std::string& cleMorceau, char flag) {
        const std::string affichee = Trim(Cp1252ToUtf8(cleMorceau));
        std::string cleH = rec::HistoryKey(cleMorceau);
        BTRieve(p_.source, kBtrGetEqual, cleH, 0, kFichierHistorique, p_.station, kOrigine);
        if (StatutBTrieve != 0) {
            Illisible(kFichierHistorique, cleH);
            return;
        }
        const auto histo = TamponEnreg(kFichierHistorique);
        const int ecrits = rec::GetInt16(histo, rec::HistoriqueDiffusion::NbPassages);
        const int lus = rec::CappedPassageCount(histo, cleMorceau);
        int invalides = 0;
        int dansPeriode = 0;
        std::string plusAncien;
        for (int i = 0; i < lus; ++i) {
            const auto quand = rec::PassageAt(histo, i);
            if (!quand) {
                ++invalides;
                continue;
            }
            const std::string jour = FormatYYYYMMDD(*quand);
            if (plusAncien.empty() || jour < plusAncien) plusAncien = jour;
            if (jour >= debut_ && jour <= fin_) ++dansPeriode;
        }
        const bool classeConnue = flag == 'O' || flag == '1' || flag == 'N' || flag == '-';
        if (!classeConnue && dansPeriode > 0)
            Ajouter(GenreIncident::QuotaInconnu,
                    "Morceau " + affichee + ": quota '" + Cp1252ToUtf8(std::string(1, flag)) +
                        "', " + std::to_string(dansPeriode) +
                        " diffusion(s) de la période comptée(s) nulle part",
                    affichee);
        if (ecrits > lus && !plusAncien.empty() && plusAncien > debut_) {
            const auto date = ParseYYYYMMDD(plusAncien);
            Ajouter(GenreIncident::HistoriqueTronque,
                    "Morceau " + affichee + ": " + std::to_string(ecrits) + " passages, " +
                        std::to_string(lus) + " lus; diffusions couvertes à partir du " +
                        (date ? FormatDDMMYYYY(*date) : plusAncien),
                    affichee);
        }
        if (invalides > 0)
            Ajouter(GenreIncident::PassageInvalide,
                    "Morceau " + affichee + ": " + std::to_string(invalides) +
                        " passage(s) illisible(s) dans l'historique",
                    affichee);
    }

    void Historiques() {
        namespace h = rec::HistoriqueDiffusion;
        std::string cle;
        int16_t op = kBtrGetFirst;
        int n = 0;
        for (;;) {
            BTRieve(p_.source, op, cle, 0, kFichierHistorique, p_.station, kOrigine);
            op = kBtrGetNext;
            if (StatutBTrieve != 0) {
                Illisible(kFichierHistorique, cle);
                break;
            }
            ++bilan_.historiquesLus;
            if (++n % 20 == 0 && Ceder(kFichierHistorique)) break;
            const std::string cleH = rec::GetBytes(TamponEnreg(kFichierHistorique), h::Cle);
            // The history key is the track key on 8 characters followed by "M".
            std::string cleM = cleH.substr(0, rec::Morceau::CleMorceau.length);
            // The track is read under a copy of the history's position: the walk goes on from
            // the record just read.
            std::string cleLue = cleM;
            BTRieve(p_.source, kBtrGetEqual, cleLue, 0, kFichierMorceaux, p_.station, kOrigine);
            if (StatutBTrieve == 4)
                Ajouter(GenreIncident::HistoriqueOrphelin,
                        "Historique " + Trim(Cp1252ToUtf8(cleH)) + " sans morceau " +
                            Trim(Cp1252ToUtf8(cleM)),
                        Trim(Cp1252ToUtf8(cleH)));
            else
                Illisible(kFichierMorceaux, cleM);
        }
    }

    void Publicite() {
        namespace lp = rec::LogPub;
        namespace cp = rec::ConducteurPub;
        // Aired and planned spots, per day and spot key.
        std::map<std::pair<std::string, std::string>, int> diffuses;
        std::map<std::pair<std::string, std::string>, int> prevus;
        std::set<std::string> clientsVus;
        std::set<std::string> clientsInconnus;
        const std::string cleFin = fin_ + "235959";
        std::string cle = debut_ + "000000";
        int16_t op = kBtrGetGreaterOrEqual;
        for (;;) {
            BTRieve(p_.source, op, cle, 0, kFichierLogPub, p_.station, kOrigine);
            op = kBtrGetNext;
            if (StatutBTrieve != 0) {
                Illisible(kFichierLogPub, cle);
                break;
            }
            if (cle.substr(0, lp::Cle.length) > cleFin) break;
            if (++bilan_.enregistrementsPubLus % 50 == 0 && Ceder(kFichierLogPub)) return;
            const auto log = TamponEnreg(kFichierLogPub);
            const std::string cleLog = rec::GetBytes(log, lp::Cle);
            const std::string client = Trim(rec::GetText(log, lp::CodeClient));
            const std::string spot = Trim(rec::GetText(log, lp::CleSpot));
            std::string jourPrevu = Trim(rec::GetBytes(log, lp::DatePrevue));
            if (!ParseYYYYMMDD(jourPrevu)) jourPrevu = rec::GetBytes(log, lp::Date);
            ++diffuses[{jourPrevu, spot}];
            const std::string quand = Horodatage(cleLog);
            if (client.empty()) {
                Ajouter(GenreIncident::ClientInconnu,
                        "Diffusion du " + quand + " (spot " + spot + ") sans client", cleLog);
                continue;
            }
            if (clientsVus.insert(client).second) {
                std::string cleC = Calibre(Utf8ToCp1252(client),
                                           static_cast<int>(rec::Client::CodeClient.length));
                if (Ouvert(kFichierClientsPub)) {
                    BTRieve(p_.source, kBtrGetEqual, cleC, 0, kFichierClientsPub, p_.station,
                            kOrigine);
                    if (StatutBTrieve == 4) clientsInconnus.insert(client);
                    else Illisible(kFichierClientsPub, cleC);
                }
            }
            if (clientsInconnus.count(client))
                Ajouter(GenreIncident::ClientInconnu,
                        "Diffusion du " + quand + " (spot " + spot + "): client " + client +
                            " inconnu",
                        cleLog);
        }
        if (!Ouvert(kFichierConducteur)) return;
        cle = debut_ + "000000";
        op = kBtrGetGreaterOrEqual;
        int n = 0;
        for (;;) {
            BTRieve(p_.source, op, cle, 0, kFichierConducteur, p_.station, kOrigine);
            op = kBtrGetNext;
            if (StatutBTrieve != 0) {
                Illisible(kFichierConducteur, cle);
                break;
            }
            if (cle.substr(0, cp::Cle.length) > cleFin) break;
            if (++n % 50 == 0 && Ceder(kFichierConducteur)) return;
            const auto r = TamponEnreg(kFichierConducteur);
            ++prevus[{rec::GetBytes(r, cp::Date), Trim(rec::GetText(r, cp::CleSpot))}];
        }
        for (const auto& [cle2, nb] : prevus) {
            const auto d = diffuses.find(cle2);
            const int airs = d == diffuses.end() ? 0 : d->second;
            if (nb > airs)
                Ajouter(GenreIncident::SpotNonDiffuse,
                        Jour(cle2.first) + ": spot " + cle2.second + " prévu " +
                            std::to_string(nb) + " fois, diffusé " + std::to_string(airs) +
                            " fois",
                        cle2.first + " " + cle2.second);
        }
        for (const auto& [cle2, nb] : diffuses) {
            const auto pr = prevus.find(cle2);
            const int plans = pr == prevus.end() ? 0 : pr->second;
            if (nb > plans)
                Ajouter(GenreIncident::DiffusionHorsConducteur,
                        Jour(cle2.first) + ": spot " + cle2.second + " diffusé " +
                            std::to_string(nb) + " fois, prévu " + std::to_string(plans) +
                            " fois au conducteur",
                        cle2.first + " " + cle2.second);
        }
    }

    static std::string Jour(const std::string& yyyymmdd) {
        const auto d = ParseYYYYMMDD(yyyymmdd);
        return d ? FormatDDMMYYYY(*d) : yyyymmdd;
    }
    // "dd/MM/yyyy HH:MM:SS" of a log key "yyyyMMddHHmmss".
    static std::string Horodatage(const std::string& cle) {
        if (cle.size() < 14) return cle;
        return Jour(cle.substr(0, 8)) + " " + cle.substr(8, 2) + ":" + cle.substr(10, 2) + ":" +
               cle.substr(12, 2);
    }

    const ParametresVerification& p_;
    std::string debut_;
    std::string fin_;
    BilanVerification bilan_;
};

// ---- The incidents file ------------------------------------------------------------------------
// Windows-1252 ini text, as the suite's ini files: a section [Incidents] with the count and the
// number not yet seen, then one section per incident, oldest first.

std::string SansSautDeLigne(std::string texte) {
    for (char& c : texte)
        if (c == '\r' || c == '\n') c = ' ';
    return texte;
}

std::string Hhmmss(const DateTime& d) {
    return PadNumber(d.hour, 2) + PadNumber(d.minute, 2) + PadNumber(d.second, 2);
}

}  // namespace

const char* LibelleGenre(GenreIncident genre) {
    for (const Libelle& l : kLibelles)
        if (l.genre == genre) return l.texte;
    return "";
}

bool GenreDeLibelle(const std::string& libelle, GenreIncident& genre) {
    for (const Libelle& l : kLibelles)
        if (libelle == l.texte) {
            genre = l.genre;
            return true;
        }
    return false;
}

BilanVerification VerifierDonnees(const ParametresVerification& p) {
    TraceProc(kOrigine);
    Verification v(p);
    BilanVerification b = v.Executer();
    TraceLog("Incidents: " + std::to_string(b.incidents.size()) + " found, " +
             std::to_string(b.morceauxLus) + " tracks, " + std::to_string(b.historiquesLus) +
             " history records, " + std::to_string(b.enregistrementsPubLus) + " log records" +
             (b.arretee ? ", stopped" : ""));
    return b;
}

void ListeIncidents::Charger(const std::string& fichier) {
    fichier_ = fichier;
    liste_.clear();
    nonVus_ = 0;
    illisibles_ = 0;
    std::ifstream in(fichier, std::ios::binary);
    if (!in) return;
    std::map<std::string, std::string> valeurs;
    std::string section;
    long nonVus = 0;
    auto terminer = [&] {
        if (section.rfind("Incident_", 0) != 0) return;
        Incident i;
        const auto jour = ParseYYYYMMDD(valeurs["Date"]);
        const std::string h = valeurs["Heure"];
        GenreIncident genre;
        bool ok = jour && h.size() == 6 && GenreDeLibelle(valeurs["Type"], genre);
        if (ok) {
            i.quand = *jour;
            try {
                i.quand.hour = std::stoi(h.substr(0, 2));
                i.quand.minute = std::stoi(h.substr(2, 2));
                i.quand.second = std::stoi(h.substr(4, 2));
                i.station = std::stoi(valeurs["Station"]);
            } catch (const std::exception&) {
                ok = false;
            }
        }
        if (ok && i.station >= 1 && i.station <= kNbStations) {
            i.genre = genre;
            i.texte = valeurs["Texte"];
            i.cle = valeurs["Cle"];
            liste_.push_back(std::move(i));
        } else {
            ++illisibles_;
        }
    };
    std::string ligne;
    while (std::getline(in, ligne)) {
        if (!ligne.empty() && ligne.back() == '\r') ligne.pop_back();
        if (ligne.size() >= 2 && ligne.front() == '[' && ligne.back() == ']') {
            terminer();
            section = ligne.substr(1, ligne.size() - 2);
            valeurs.clear();
            continue;
        }
        const size_t egal = ligne.find('=');
        if (egal == std::string::npos) continue;
        const std::string cle = Trim(ligne.substr(0, egal));
        const std::string valeur = Cp1252ToUtf8(ligne.substr(egal + 1));
        if (section == "Incidents" && cle == "NonVus") {
            try {
                nonVus = std::stol(valeur);
            } catch (const std::exception&) {
                nonVus = 0;
            }
        } else {
            valeurs[cle] = valeur;
        }
    }
    terminer();
    nonVus_ = static_cast<size_t>(std::clamp<long>(nonVus, 0, static_cast<long>(liste_.size())));
}

std::string FichierIncidents() {
    return NomFichierSettings("Incidents", ".Ini");
}

bool ListeIncidents::Enregistrer() const {
    if (fichier_.empty()) return false;
    std::ostringstream out;
    out << "[Incidents]\r\nNb=" << liste_.size() << "\r\nNonVus=" << nonVus_ << "\r\n";
    for (size_t n = 0; n < liste_.size(); ++n) {
        const Incident& i = liste_[n];
        out << "[Incident_" << PadNumber(static_cast<int64_t>(n + 1), 5) << "]\r\n"
            << "Date=" << FormatYYYYMMDD(i.quand) << "\r\n"
            << "Heure=" << Hhmmss(i.quand) << "\r\n"
            << "Station=" << i.station << "\r\n"
            << "Type=" << Utf8ToCp1252(LibelleGenre(i.genre)) << "\r\n"
            << "Texte=" << Utf8ToCp1252(SansSautDeLigne(i.texte)) << "\r\n"
            << "Cle=" << Utf8ToCp1252(SansSautDeLigne(i.cle)) << "\r\n";
    }
    const std::string temp = fichier_ + ".tmp";
    {
        std::ofstream f(temp, std::ios::binary | std::ios::trunc);
        if (!f) return false;
        const std::string texte = out.str();
        f.write(texte.data(), static_cast<std::streamsize>(texte.size()));
        f.flush();
        if (!f) {
            f.close();
            std::error_code ec;
            std::filesystem::remove(temp, ec);
            TraceLog("Incidents: cannot write " + fichier_);
            return false;
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, fichier_, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        TraceLog("Incidents: cannot write " + fichier_);
        return false;
    }
    return true;
}

size_t ListeIncidents::Ajouter(const std::vector<Incident>& nouveaux) {
    using Cle = std::tuple<int, int, std::string, std::string>;
    std::set<Cle> connus;
    for (const Incident& i : liste_)
        connus.emplace(i.station, static_cast<int>(i.genre), i.cle, i.texte);
    size_t ajoutes = 0;
    for (const Incident& i : nouveaux)
        if (connus.emplace(i.station, static_cast<int>(i.genre), i.cle, i.texte).second) {
            liste_.push_back(i);
            ++ajoutes;
        }
    if (liste_.size() > kMaxIncidents)
        liste_.erase(liste_.begin(),
                     liste_.begin() + static_cast<std::ptrdiff_t>(liste_.size() - kMaxIncidents));
    nonVus_ = std::min(nonVus_ + ajoutes, liste_.size());
    return ajoutes;
}

bool ListeIncidents::Purger() {
    if (Question("Voulez-vous effacer la liste des incidents ?", kTitreApplication,
                 kMbYesNo | kMbQuestion) != kIdYes)
        return false;
    liste_.clear();
    nonVus_ = 0;
    Enregistrer();
    TraceLog("Incidents: list purged");
    return true;
}

void InitTableurIncidents(Grid& g) {
    InitTableur(g, 6, 1, 1);
    const char* textes[] = {"Date", "Heure", "Station", "Type", "Description", "Clé"};
    const int largeurs[] = {10, 8, 7, 24, 80, 16};
    for (int c = 0; c < 6; ++c) {
        g.SetColHeader(0, c + 1, textes[c]);
        g.SetColWidth(c + 1, largeurs[c]);
    }
    g.SetGenre(3, GenreColonne::Nombre);
}

void RemplirTableurIncidents(Grid& g, const std::vector<Incident>& incidents) {
    g.ClearData();
    g.SetMaxRows(static_cast<int>(incidents.size()));
    int row = 0;
    for (auto it = incidents.rbegin(); it != incidents.rend(); ++it) {
        ++row;
        g.SetRowHeader(0, row, std::to_string(row));
        g.SetText(1, row, FormatDDMMYYYY(it->quand));
        g.SetText(2, row, FormatHHMMSS(it->quand));
        g.SetText(3, row, std::to_string(it->station));
        g.SetText(4, row, LibelleGenre(it->genre));
        g.SetText(5, row, it->texte);
        g.SetText(6, row, it->cle);
    }
}

}  // namespace zl3
