// The headless half of the main window's start: command line, configuration folders, site,
// bases and stations, the trace log's folder. The window adds its look, grids and geometry.
#pragma once

#include <string>

namespace zl3 {

// InitGeneral's configuration steps: resolves the configuration (DetermineDossierConfig), points
// the trace log at the first base's log folder, resolves the settings folder. Traces every step
// and flushes the trace to the daily log. False when the configuration had a problem (the tool
// goes on with the defaults).
bool InitGeneral(const std::string& ligneCommande = "");

// A readable account of the resolved configuration (site, bases, stations, folders), for the
// command-line programs.
std::string ResumeConfiguration();

}  // namespace zl3
