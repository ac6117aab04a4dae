#include "com/registration.h"

#include <doctest/doctest.h>

#include <filesystem>
#include <map>
#include <stdexcept>

#include "tests/com/component_library.h"
#include "tests/support/com/script_host.h"
#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"

// Registration as a user does it, by regsvr32, and what it leaves in the registry.

namespace vantlo::test {
namespace {

/// The names of all classes, interfaces and type libraries, and every key and value that names the component, by path.
using Registry = std::map<std::wstring, std::wstring>;

/// What a key is to the component.
enum class Kind { container, own, other };

Kind kind_of(const std::wstring& name) {
    for (const wchar_t* container : {L"CLSID", L"Interface", L"TypeLib", L"Wow6432Node"}) {
        if (name == container) return Kind::container;
    }
    if (name.find(L"Vantlo") != std::wstring::npos) return Kind::own;
    for (const GUID* identifier :
         {&LIBID_Vantlo, &LIBID_Corvane, &CLSID_Inventory_Class, &IID__Inventory_Class, &IID__StockBillItemObject,
          &IID__LossOverItemObject, &IID__RGStockItemObject, &IID__BorrowItemObject}) {
        wchar_t braced[39];
        StringFromGUID2(*identifier, braced, 39);
        if (lstrcmpiW(name.c_str(), braced) == 0) return Kind::own;
    }
    return Kind::other;
}

void read_key(HKEY key, const std::wstring& path, Kind kind, Registry& into) {
    wchar_t name[512];
    for (DWORD i = 0; kind == Kind::own; ++i) {
        DWORD length = std::size(name), size = 0;
        if (RegEnumValueW(key, i, name, &length, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS) break;
        std::wstring value(size / sizeof(wchar_t) + 1, L'\0');
        RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value.data()), &size);
        into[path + L"@" + name] = value;
    }
    for (DWORD i = 0;; ++i) {
        DWORD length = std::size(name);
        if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        const std::wstring path_below = path + L"\\" + name;
        into[path_below] = L"(key)";
        const Kind kind_below = kind == Kind::own ? Kind::own : kind_of(name);
        HKEY below = nullptr;
        if (kind_below == Kind::other || RegOpenKeyExW(key, name, 0, KEY_READ, &below) != ERROR_SUCCESS) continue;
        read_key(below, path_below, kind_below, into);
        RegCloseKey(below);
    }
}

/// The classes of the machine and of the user.
Registry classes() {
    Registry found;
    for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(root, L"Software\\Classes", 0, KEY_READ, &key) != ERROR_SUCCESS) continue;
        read_key(key, root == HKEY_CURRENT_USER ? L"user" : L"machine", Kind::container, found);
        RegCloseKey(key);
    }
    return found;
}

/// What one of two states has and the other has not, a line each.
std::string difference(const Registry& left, const Registry& right) {
    std::string lines;
    const auto add = [&](const char* mark, const Registry& from, const Registry& other) {
        for (const auto& [key, value] : from) {
            const auto found = other.find(key);
            if (found != other.end() && found->second == value) continue;
            const std::wstring line = key + L" = " + value.c_str();
            lines += mark + to_utf8(Text(line.begin(), line.end())) + "\n";
        }
    };
    add("- ", left, right);
    add("+ ", right, left);
    return lines;
}

/// The library in a folder whose name has blanks, an apostrophe and Chinese characters.
struct CopiedLibrary {
    CopiedLibrary() {
        std::filesystem::create_directories(file.parent_path());
        std::filesystem::copy_file(ComponentLibrary::path(), file);
    }

    TemporaryFolder folder;
    std::filesystem::path file = std::filesystem::path(folder.file("")) / L"老板's 仓库 1" / L"Vantlo.dll";
};

void regsvr32(const std::wstring& options, const CopiedLibrary& library) {
    CHECK(run_to_end(L"regsvr32.exe /s " + options + L" \"" + library.file.wstring() + L"\"") == 0);
}

/// The file that serves the class for the calling process, once an object is made as hosts make it.
std::wstring serving_file() {
    CLSID identifier;
    REQUIRE(CLSIDFromProgID(L"Vantlo.Inventory_Class", &identifier) == S_OK);
    CHECK(identifier == CLSID_Inventory_Class);
    CLSID versioned;
    CHECK(CLSIDFromProgID(L"Vantlo.Inventory_Class.3", &versioned) == S_OK);
    CHECK(versioned == CLSID_Inventory_Class);
    const Apartment apartment;
    std::wstring path(1000, L'\0');
    {
        ComPointer<_Inventory_Class> object;
        REQUIRE(CoCreateInstance(identifier, nullptr, CLSCTX_INPROC_SERVER, IID__Inventory_Class,
                                 object.out_untyped()) == S_OK);
        path.resize(GetModuleFileNameW(GetModuleHandleW(L"Vantlo.dll"), path.data(), 1000));
    }
    CoFreeUnusedLibraries();
    return path;
}

void check_type_library() {
    for (const auto& [identifier, major] : {std::pair(&LIBID_Vantlo, 3), std::pair(&LIBID_Corvane, 1)}) {
        for (const LCID locale : {LCID{0x409}, LCID{0}}) {
            ComPointer<ITypeLib> library;
            CHECK(LoadRegTypeLib(*identifier, static_cast<WORD>(major), 0, locale, library.out()) == S_OK);
        }
    }
}

TEST_CASE("Registration for everyone serves hosts from any path, and unregistering leaves nothing") {
    const CopiedLibrary library;
    const Registry before = classes();
    regsvr32(L"", library);
    CHECK(serving_file() == library.file.wstring());
    check_type_library();
    CHECK(classes().size() > before.size() + 40);
    regsvr32(L"", library);  // once more changes nothing
    regsvr32(L"/u", library);
    CHECK(difference(before, classes()) == "");
    CLSID identifier;
    CHECK(FAILED(CLSIDFromProgID(L"Vantlo.Inventory_Class", &identifier)));
}

/// The values that a registration added for the machine or for the user, by path below its classes.
Registry added(const Registry& before, const Registry& after, const std::wstring& whose) {
    Registry found;
    for (const auto& [key, value] : after) {
        const bool is_value = key.find(L'@') != std::wstring::npos;
        if (!is_value || before.contains(key) || !key.starts_with(whose)) continue;
        // A 32-bit program's keys, and type libraries seen from either side, lie in a folder that it does not name.
        constexpr std::wstring_view redirected = L"\\Wow6432Node";
        const std::wstring below = key.substr(whose.size());
        found[below.starts_with(redirected) ? below.substr(redirected.size()) : below] = value;
    }
    return found;
}

// Windows shows hosts both halves as one; Wine 8 shows the machine's alone, so the user's is compared with it here.
TEST_CASE("Registration for the user alone writes the same keys for the user and none for the machine") {
    const CopiedLibrary library;
    const Registry before = classes();
    regsvr32(L"", library);
    const Registry for_machine = added(before, classes(), L"machine");
    CHECK(for_machine.size() > 30);
    regsvr32(L"/u", library);
    regsvr32(L"/n /i:user", library);
    CHECK(added(before, classes(), L"machine").empty());
    CHECK(difference(for_machine, added(before, classes(), L"user")) == "");
    regsvr32(L"/u /n /i:user", library);
    CHECK(difference(before, classes()) == "");
}

TEST_CASE("Unregistering keeps what the other bitness still needs") {
    const CopiedLibrary library;
    const Registry before = classes();
    regsvr32(L"", library);
    wchar_t braced[39];
    StringFromGUID2(LIBID_Vantlo, braced, 39);
    const std::wstring files = std::wstring(L"Software\\Classes\\TypeLib\\") + braced + L"\\3.0\\409\\";
    const std::wstring other = files + (sizeof(void*) == 8 ? L"win32" : L"win64");
    HKEY key = nullptr;
    REQUIRE(RegCreateKeyW(HKEY_LOCAL_MACHINE, other.c_str(), &key) == ERROR_SUCCESS);
    RegCloseKey(key);
    regsvr32(L"/u", library);
    CLSID identifier;
    CHECK(CLSIDFromProgID(L"Vantlo.Inventory_Class", &identifier) == S_OK);
    REQUIRE(RegDeleteKeyW(HKEY_LOCAL_MACHINE, other.c_str()) == ERROR_SUCCESS);
    regsvr32(L"/u", library);
    CHECK(difference(before, classes()) == "");
}

std::wstring machine_text(const std::wstring& key, const wchar_t* name = nullptr) {
    wchar_t text[1000] = L"(absent)";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

TEST_CASE("A new copy installed over an old one stays registered when the old one goes, in either order") {
    const CopiedLibrary old_copy, new_copy;
    const Registry before = classes();
    SUBCASE("the new one comes first") {
        regsvr32(L"", old_copy);
        regsvr32(L"", new_copy);
        regsvr32(L"/u", old_copy);
    }
    SUBCASE("the old one goes first") {
        regsvr32(L"", old_copy);
        regsvr32(L"/u", old_copy);
        regsvr32(L"", new_copy);
    }
    CHECK(serving_file() == new_copy.file.wstring());
    check_type_library();
    CHECK(machine_text(event_source_key, L"EventMessageFile") == new_copy.file.wstring());
    regsvr32(L"/u", new_copy);
    CHECK(difference(before, classes()) == "");
    CHECK(machine_text(event_source_key, L"EventMessageFile") == L"(absent)");
}

TEST_CASE("The line objects' library stays registered where somebody else has it") {
    const CopiedLibrary library;
    const std::filesystem::path file = library.file.parent_path() / L"Corvane.dll";
    std::filesystem::copy_file(library.file, file);
    wchar_t braced[39];
    StringFromGUID2(LIBID_Corvane, braced, 39);
    const std::wstring whole = std::wstring(L"Software\\Classes\\TypeLib\\") + braced;
    const std::wstring key = whole + L"\\1.0\\409\\" + (sizeof(void*) == 8 ? L"win64" : L"win32");
    const Registry without = classes();
    const std::wstring text = file.wstring();
    REQUIRE(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, REG_SZ, text.c_str(),
                            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS);
    const Registry before = classes();
    regsvr32(L"", library);
    CHECK(machine_text(key) == text);
    CHECK(serving_file() == library.file.wstring());
    regsvr32(L"/u", library);
    CHECK(difference(before, classes()) == "");

    // A file that is gone is nobody's.
    std::filesystem::remove(file);
    regsvr32(L"", library);
    CHECK(machine_text(key) == library.file.wstring() + L"\\2");
    regsvr32(L"/u", library);
    CHECK(difference(without, classes()) == "");
}

TEST_CASE("DllInstall refuses to register for anyone but the machine and the user") {
    const ComponentLibrary library;
    const auto install = library.function<HRESULT(STDAPICALLTYPE*)(BOOL, const wchar_t*)>("DllInstall");
    const Registry before = classes();
    CHECK(install(TRUE, L"everybody") == E_INVALIDARG);
    CHECK(difference(before, classes()) == "");
}

}  // namespace
}  // namespace vantlo::test
