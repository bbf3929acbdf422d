#include "klv/platform/module_table.h"
#include "klv/platform/system/handle_token.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

using namespace klv;

namespace {

void first_function() { }
void second_function() { }

constexpr module_symbol symbols[] = {{"First", first_function}, {"Second", second_function}};

} // namespace

TEST(ModuleTable, NamesStandForRegisteredSymbols)
{
    EXPECT_EQ(LoadLibraryA("COLOURS.DLL"), nullptr);
    ASSERT_TRUE(RegisterModule("Colours.dll", symbols));
    EXPECT_EQ(GetModuleHandleA("COLOURS"), nullptr) << "not loaded yet";
    const HINSTANCE module = LoadLibraryA("COLOURS");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryA("colours.DLL"), module);
    EXPECT_EQ(GetModuleHandleA("COLOURS"), module);
    EXPECT_EQ(GetProcAddress(module, "Second"), second_function);
    EXPECT_EQ(GetProcAddress(module, "second"), nullptr) << "function names keep their case";
    EXPECT_LE(reinterpret_cast<std::uintptr_t>(module), UINT32_MAX);

    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetProcAddress(module, "First"), first_function) << "loaded twice";
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetProcAddress(module, "First"), nullptr);

    EXPECT_EQ(LoadLibraryA("colours.dll"), module);
    UnregisterModule("colours.dll");
    EXPECT_EQ(GetProcAddress(module, "First"), first_function) << "in use: valid until it is freed";
    FreeLibrary(module);
    EXPECT_EQ(LoadLibraryA("colours.dll"), nullptr);
}

TEST(ModuleTable, NamesStandForSharedObjects)
{
    ASSERT_TRUE(MapModule("MATHS.DLL", "/no/such/file.so"));
    EXPECT_EQ(LoadLibraryA("MATHS.DLL"), nullptr);
    UnregisterModule("MATHS.DLL");

    const HINSTANCE self = LoadLibraryA("KLV006.DLL");
    EXPECT_EQ(self, library_instance());
    EXPECT_NE(GetProcAddress(self, "malloc"), nullptr);
    EXPECT_TRUE(FreeLibrary(self));
    EXPECT_TRUE(FreeLibrary(self)) << "the library itself stays";
    EXPECT_EQ(GetModuleHandleA("klv006"), library_instance());
}

TEST(ModuleTable, FileNamesAreCutToTheRoom)
{
    char name[1000];
    const DWORD length = GetModuleFileNameA(library_instance(), name, sizeof name);
    const std::string whole(name);
    EXPECT_EQ(whole.size(), length);
    EXPECT_EQ(whole.front(), '/');
    char few[5];
    EXPECT_EQ(GetModuleFileNameA(library_instance(), few, sizeof few), 4U);
    EXPECT_EQ(few, whole.substr(0, 4));
    EXPECT_EQ(GetModuleFileNameA(reinterpret_cast<HINSTANCE>(std::uintptr_t{12}), few, sizeof few), 0U);
    EXPECT_STREQ(few, "");
}

TEST(HandleToken, GoesThereAndBack)
{
    int a = 0;
    int b = 0;
    const std::uint32_t token = token_of(&a);
    EXPECT_NE(token, 0U);
    EXPECT_EQ(token_of(&a), token);
    EXPECT_NE(token_of(&b), token);
    EXPECT_EQ(pointer_of(token), &a);
    EXPECT_EQ(token_of(nullptr), 0U);
    EXPECT_EQ(pointer_of(0), nullptr);
    EXPECT_EQ(pointer_of(0xFFFFFFFF), nullptr);
    release_token(&a);
    EXPECT_EQ(pointer_of(token), nullptr);
    release_token(&a);
    EXPECT_EQ(pointer_of(token_of(&b)), &b);
    release_token(&b);
}
