// BTRCALL through libzl3btr alone, as a program written for Btrieve's API uses it.
#include <gtest/gtest.h>
#include <stdlib.h>
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "Processus.h"
#include "btrcall.h"

namespace {

TEST(BtrSharedLibrary, BtrcallCreatesWritesAndReads) {
    const std::string pattern = zl3::test::NouveauDossierTemporaire("zl3-btrcall-");
    const std::string path = pattern + "/FRAD046.bt6";
    // Record 512 bytes, page 1024, one key 1/5 modifiable.
    uint8_t layout[32] = {0x00, 0x02, 0x00, 0x04, 1};
    layout[16] = 1;
    layout[18] = 5;
    layout[20] = 2;
    uint8_t block[128];
    std::memset(block, ' ', sizeof block);
    char key[256] = {};
    std::strcpy(key, path.c_str());
    uint32_t length = sizeof layout;
    ASSERT_EQ(BTRCALL(14, block, layout, &length, key, 255, 0), 0);
    length = 0;
    ASSERT_EQ(BTRCALL(0, block, nullptr, &length, key, 255, 0), 0);
    std::vector<char> record(512, 'x');
    std::memcpy(record.data(), "00042", 5);
    length = 512;
    ASSERT_EQ(BTRCALL(2, block, record.data(), &length, key, 255, 0), 0);
    std::vector<char> read(512, 0);
    std::memset(key, 0, sizeof key);
    std::memcpy(key, "00042", 5);
    length = 512;
    ASSERT_EQ(BTRCALL(5, block, read.data(), &length, key, 255, 0), 0);
    EXPECT_EQ(length, 512u);
    EXPECT_EQ(read, record);
    std::memcpy(key, "00043", 5);
    EXPECT_EQ(BTRCALL(5, block, read.data(), &length, key, 255, 0), 4);
    EXPECT_EQ(BTRCALL(25, block, nullptr, &length, key, 255, 0), 0);
    EXPECT_EQ(BTRCALL(6, block, read.data(), &length, key, 255, 0), 3);
    std::filesystem::remove_all(pattern);
}

TEST(BtrSharedLibrary, OnlyBtrcallIsExported) {
#ifdef _WIN32
    HMODULE dll = GetModuleHandleA(ZL3BTR_DLL);
    ASSERT_NE(dll, nullptr);
    EXPECT_NE(GetProcAddress(dll, "BTRCALL"), nullptr);
    EXPECT_EQ(GetProcAddress(dll, "_ZN3zl33btr7BtrCallEtPvS1_PjS1_ha"), nullptr);
    EXPECT_EQ(GetProcAddress(dll, "_ZN3zl33btr13StatusMeaningEs"), nullptr);
    return;
#endif
#ifndef _WIN32
    void* self = dlopen(nullptr, RTLD_NOW);
    ASSERT_NE(self, nullptr);
    EXPECT_NE(dlsym(self, "BTRCALL"), nullptr);
    EXPECT_EQ(dlsym(self, "_ZN3zl33btr7BtrCallEtPvS1_PjS1_ha"), nullptr);
    EXPECT_EQ(dlsym(self, "_ZN3zl33btr13StatusMeaningEs"), nullptr);
    dlclose(self);
#endif
}

}  // namespace
