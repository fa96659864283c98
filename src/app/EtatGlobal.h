// Application-wide state and how to start again from scratch. Each module that keeps state for
// the life of the process (trace list, resolved configuration, shell state, open database files,
// loaded versions list, …) registers the routine that puts it back to its initial value;
// ReinitialiserEtatGlobal runs every registered routine. Test fixtures call it between tests, so
// that no test sees what another one left.
#pragma once

namespace zl3 {

// Registers `reinitialiser` under `module` (a module's name, for diagnostics). Meant for a
// namespace-scope object of the module's own source file (see EnregistrementEtat), so that every
// module linked into a program is covered.
void EnregistrerReinitialisation(const char* module, void (*reinitialiser)());

// Puts every registered module back to its initial state, in the order they registered.
void ReinitialiserEtatGlobal();

// Number of registered modules (diagnostics, tests).
int NombreModulesAvecEtat();

struct EnregistrementEtat {
    EnregistrementEtat(const char* module, void (*reinitialiser)()) {
        EnregistrerReinitialisation(module, reinitialiser);
    }
};

}  // namespace zl3
