// A 32-bit Windows program of the suite's kind: it finds WBTRV32.DLL beside itself, takes the
// entry point "BTRCALL" by name and calls it as Btrieve's header declares it (__stdcall), the
// way the suite's programs do. Exit code 0 when every check holds; each failure is printed.
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Btrcall = int16_t(__stdcall*)(uint16_t, void*, void*, uint32_t*, void*, uint8_t, int8_t);

int echecs = 0;

void Verifie(bool ok, const char* quoi) {
    if (!ok) {
        std::printf("FAILED: %s\n", quoi);
        ++echecs;
    }
}

}  // namespace

int main() {
    wchar_t exe[MAX_PATH];
    const DWORD n = GetModuleFileNameW(nullptr, exe, MAX_PATH);
    std::wstring dossier(exe, n);
    dossier.erase(dossier.find_last_of(L"\\/") + 1);
    HMODULE dll = LoadLibraryW((dossier + L"WBTRV32.DLL").c_str());
    if (!dll) {
        std::printf("FAILED: WBTRV32.DLL cannot be loaded (%lu)\n", GetLastError());
        return 1;
    }
    auto btrcall = reinterpret_cast<Btrcall>(GetProcAddress(dll, "BTRCALL"));
    Verifie(GetProcAddress(dll, "_BTRCALL@28") == nullptr && GetProcAddress(dll, "BTRCALL@28") ==
                                                                 nullptr,
            "the entry point is exported under its plain name only");
    if (!btrcall) {
        std::printf("FAILED: no BTRCALL in WBTRV32.DLL\n");
        return 1;
    }
    // __stdcall: the callee removes its 7 arguments (28 bytes) with "ret 0x1c".
    const auto* code = reinterpret_cast<const uint8_t*>(btrcall);
    bool retStdcall = false;
    for (int i = 0; i + 2 < 256 && !retStdcall; ++i)
        retStdcall = code[i] == 0xC2 && code[i + 1] == 0x1C && code[i + 2] == 0x00;
    Verifie(retStdcall, "BTRCALL returns with ret 0x1c (__stdcall, 28 bytes of arguments)");

    wchar_t temp[MAX_PATH];
    GetTempPathW(MAX_PATH, temp);
    char chemin[MAX_PATH];
    WideCharToMultiByte(CP_UTF8, 0, temp, -1, chemin, MAX_PATH, nullptr, nullptr);
    const std::string fichier = std::string(chemin) + "zl3-wbtrv32-" +
                                std::to_string(GetCurrentProcessId()) + ".bt6";

    // Record 64 bytes, page 1024, one key 1/5 (unique).
    uint8_t layout[32] = {64, 0, 0x00, 0x04, 1};
    layout[16] = 1;
    layout[18] = 5;
    uint8_t bloc[128];
    std::memset(bloc, ' ', sizeof bloc);
    char cle[256] = {};
    std::strcpy(cle, fichier.c_str());
    uint32_t longueur = sizeof layout;
    Verifie(btrcall(14, bloc, layout, &longueur, cle, 255, 0) == 0, "Create");
    longueur = 0;
    Verifie(btrcall(0, bloc, nullptr, &longueur, cle, 255, 0) == 0, "Open");
    // Many calls in a row: with the wrong convention the stack drifts by 28 bytes a call.
    std::vector<char> rec(64, '.');
    int inseres = 0;
    for (int i = 0; i < 2000; ++i) {
        std::snprintf(rec.data(), 6, "%05d", i);
        longueur = 64;
        if (btrcall(2, bloc, rec.data(), &longueur, cle, 255, 0) == 0) ++inseres;
    }
    Verifie(inseres == 2000, "2000 Insert");
    int lus = 0;
    std::vector<char> lu(64);
    longueur = 64;
    int16_t st = btrcall(12, bloc, lu.data(), &longueur, cle, 255, 0);
    while (st == 0) {
        char attendu[6];
        std::snprintf(attendu, sizeof attendu, "%05d", lus);
        if (std::memcmp(lu.data(), attendu, 5) != 0) break;
        ++lus;
        longueur = 64;
        st = btrcall(6, bloc, lu.data(), &longueur, cle, 255, 0);
    }
    Verifie(st == 9 && lus == 2000, "Get First, Get Next to the end in key order");
    std::memset(cle, 0, sizeof cle);
    std::memcpy(cle, "01234", 5);
    longueur = 64;
    Verifie(btrcall(5, bloc, lu.data(), &longueur, cle, 255, 0) == 0 && longueur == 64 &&
                std::memcmp(lu.data(), "01234", 5) == 0,
            "Get Equal");
    std::memcpy(cle, "99999", 5);
    Verifie(btrcall(5, bloc, lu.data(), &longueur, cle, 255, 0) == 4, "Get Equal, missing key: 4");
    Verifie(btrcall(1, bloc, nullptr, &longueur, cle, 255, 0) == 0, "Close");
    Verifie(btrcall(6, bloc, lu.data(), &longueur, cle, 255, 0) == 3, "a closed block: 3");
    FreeLibrary(dll);
    DeleteFileA(fichier.c_str());
    std::printf("%d passed, %d failed\n", echecs == 0 ? 1 : 0, echecs == 0 ? 0 : 1);
    return echecs == 0 ? 0 : 1;
}
