// Lib_Data_Pervasive_2: status texts and the reports of unexpected database statuses.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zl3 {

// The French/English text of a Btrieve status; ends with a line feed. Statuses 11 and 12 name
// the file between the parentheses.
std::string ErreurBTrieveLibelle(int status, const std::string& nomFichier);

// Reports the status left in StatutBTrieve for the call made by caller slot `source` on file
// `fichier` of station `station`: traced, and shown through the message dialog, with the last
// six calls of that caller. Status 80 is never shown; network statuses at most once every 300 s.
void ErreurBTrieve(int source, int fichier, const std::string& cle, const std::string& moduleEtProc,
                   int station = 1);

// Forgets when the last network error was shown (tests; a new run).
void ResetErreursReseau();

// Every status reported (by ErreurBTrieve, or by a failed open) since the last
// EffaceIncidentsBTrieve, one line each: the file name, ": ", and the status text without its
// line feed ("FRADA47.bt6: Err: 2: The application encountered an I/O error"). A run that meets
// one has not read everything it meant to read.
const std::vector<std::string>& IncidentsBTrieve();
void EffaceIncidentsBTrieve();
void NoteIncidentBTrieve(const std::string& chemin, int status);

}  // namespace zl3
