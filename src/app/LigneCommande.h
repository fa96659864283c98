// Command-line switches given by the suite when it starts the tool.
#pragma once

#include <string>

namespace zl3 {

// Reads "/Instance=" (or "/I="), "/Wait=" and "/IP=" from the command line into Etat(); the
// wait runs at once, letting events run, until the start stopwatch shows that many milliseconds.
void AnalyseChaineCommand(const std::string& ligneCommande);

// The leading characters of `text` (after trimming) that belong to `alphabet`.
std::string ValeurSwitch(const std::string& text, const std::string& alphabet);

// Data arrival on a SocketUDP element: a non-blank datagram makes it the last active socket.
void SocketUDP_DataArrival(int index, const std::string& datagram);
// Error event of a SocketUDP element: traced.
void SocketUDP_Error(int index, long number, const std::string& description);

}  // namespace zl3
