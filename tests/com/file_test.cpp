#include <doctest/doctest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/com/component_library.h"

// The library's file: what it needs of a machine, what it offers, and what it says of itself.

namespace vantlo::test {
namespace {

template <typename Structure>
const Structure* at(HMODULE module, std::size_t offset) {
    return reinterpret_cast<const Structure*>(reinterpret_cast<const std::byte*>(module) + offset);
}

const IMAGE_NT_HEADERS& headers(HMODULE module) {
    return *at<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
}

const IMAGE_DATA_DIRECTORY& directory(HMODULE module, std::size_t entry) {
    return headers(module).OptionalHeader.DataDirectory[entry];
}

TEST_CASE("The file says that it needs Windows 6.0, and not when it was built") {
    const ComponentLibrary library;
    const IMAGE_OPTIONAL_HEADER& header = headers(library.module()).OptionalHeader;
    CHECK(header.MajorOperatingSystemVersion == 6);
    CHECK(header.MinorOperatingSystemVersion == 0);
    CHECK(header.MajorSubsystemVersion == 6);
    CHECK(header.MinorSubsystemVersion == 0);
    CHECK(headers(library.module()).FileHeader.TimeDateStamp == 0);
    const DWORD exports = directory(library.module(), IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress;
    CHECK(at<IMAGE_EXPORT_DIRECTORY>(library.module(), exports)->TimeDateStamp == 0);
}

TEST_CASE("The library imports nothing but the system's own libraries") {
    const std::set<std::string> of_the_system = {"advapi32.dll", "kernel32.dll", "msvcrt.dll",
                                                 "ole32.dll",    "oleaut32.dll", "user32.dll"};
    const ComponentLibrary library;
    const HMODULE module = library.module();
    int seen = 0;
    for (auto* import =
             at<IMAGE_IMPORT_DESCRIPTOR>(module, directory(module, IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
         import->Name != 0; ++import, ++seen) {
        std::string name = at<char>(module, import->Name);
        std::ranges::transform(name, name.begin(), [](char c) { return 'A' <= c && c <= 'Z' ? char(c + 32) : c; });
        CHECK_MESSAGE(of_the_system.contains(name), name);
    }
    CHECK(seen > 3);
}

TEST_CASE("The library exports its five functions undecorated, and nothing else") {
    const ComponentLibrary library;
    const HMODULE module = library.module();
    const auto* const exports =
        at<IMAGE_EXPORT_DIRECTORY>(module, directory(module, IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    std::set<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        names.insert(at<char>(module, at<DWORD>(module, exports->AddressOfNames)[i]));
    }
    CHECK(names == std::set<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllInstall", "DllRegisterServer",
                                         "DllUnregisterServer"});
}

TEST_CASE("The resource _IID_INVENTORY_CLASS is the interface identifier behind its length") {
    const ComponentLibrary library;
    const HRSRC found = FindResourceW(library.module(), L"_IID_INVENTORY_CLASS", RT_RCDATA);
    REQUIRE(found != nullptr);
    REQUIRE(SizeofResource(library.module(), found) == 20);
    std::array<std::byte, 20> expected = {std::byte{16}};
    std::memcpy(expected.data() + 4, &IID__Inventory_Class, sizeof IID__Inventory_Class);
    CHECK(std::memcmp(LockResource(LoadResource(library.module(), found)), expected.data(), expected.size()) == 0);
}

std::string whole_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

TEST_CASE("The file names neither its functions nor a folder of the machine that built it; another has the names") {
    const std::string library = whole_file(VANTLO_COMPONENT);
    const std::string names = whole_file(std::filesystem::path(VANTLO_COMPONENT).replace_extension("debug").string());
    REQUIRE(library.size() > 100'000);
    REQUIRE(names.size() > 100'000);
    CHECK(library.find("watch_apartment") == std::string::npos);
    CHECK(names.find("watch_apartment") != std::string::npos);
    CHECK(library.find("Vantlo.debug") != std::string::npos);
    CHECK(library.find(VANTLO_SOURCE_DIR) == std::string::npos);
    CHECK(names.find(VANTLO_SOURCE_DIR) == std::string::npos);
}

std::wstring version_text(const std::vector<std::byte>& version, const wchar_t* language, const wchar_t* name) {
    const std::wstring key = std::wstring(L"\\StringFileInfo\\") + language + L"\\" + name;
    void* value = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(version.data(), key.c_str(), &value, &length) || length == 0) return L"(absent)";
    return {static_cast<const wchar_t*>(value), length - 1};
}

TEST_CASE("The file's version is told in Chinese and in English") {
    const std::wstring path = ComponentLibrary::path();
    std::vector<std::byte> version(GetFileVersionInfoSizeW(path.c_str(), nullptr));
    REQUIRE(!version.empty());
    REQUIRE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(version.size()), version.data()));
    CHECK(version_text(version, L"080404b0", L"FileDescription") == L"Vantlo 库存台账组件");
    CHECK(version_text(version, L"040904b0", L"FileDescription") == L"Vantlo stock ledger component");
    for (const wchar_t* language : {L"080404b0", L"040904b0"}) {
        CHECK(version_text(version, language, L"FileVersion") == L"3.0.0");
        CHECK(version_text(version, language, L"OLESelfRegister") != L"(absent)");
        CHECK(version_text(version, language, L"CompanyName") == L"Vantlo");
        CHECK(version_text(version, language, L"LegalCopyright").find(L"Vantlo") != std::wstring::npos);
        CHECK(version_text(version, language, L"ProductName").find(L"Vantlo") == 0);
        CHECK(version_text(version, language, L"OriginalFilename") == L"Vantlo.dll");
    }
}

TEST_CASE("The file's one event has the reported text as it stands") {
    const ComponentLibrary library;
    const wchar_t* reported[] = {L"In_AddInventory():数据类型不匹配。"};
    wchar_t text[100] = {};
    constexpr DWORD flags = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY;
    FormatMessageW(flags, library.module(), 1, 0, text, 100,
                   reinterpret_cast<va_list*>(const_cast<wchar_t**>(reported)));
    CHECK(text == std::wstring(reported[0]) + L"\r\n");
}

}  // namespace
}  // namespace vantlo::test
