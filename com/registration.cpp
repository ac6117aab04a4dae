#include "com/registration.h"

#include <olectl.h>
#include <vantlo.h>  // made from com/idl/vantlo.idl

#include <vector>

namespace vantlo {

namespace {

#ifdef _WIN64
constexpr wchar_t platform[] = L"win64";
constexpr wchar_t other_platform[] = L"win32";
#else
constexpr wchar_t platform[] = L"win32";
constexpr wchar_t other_platform[] = L"win64";
#endif

/// What the system marshals automation interfaces with.
constexpr wchar_t automation_proxy[] = L"{00020424-0000-0000-C000-000000000046}";

/// The locales under which a type library is found: its own, and none, where the system's marshaller looks.
constexpr const wchar_t* locales[] = {L"409", L"0"};

constexpr wchar_t class_name[] = L"Vantlo.Inventory_Class";
constexpr wchar_t versioned_class_name[] = L"Vantlo.Inventory_Class.3";

std::wstring braced(REFGUID identifier) {
    wchar_t text[39];
    StringFromGUID2(identifier, text, 39);
    return text;
}

/// One value of the registry below Software\Classes.
struct Row {
    std::wstring key;
    const wchar_t* name;  ///< null for the key's default value
    std::wstring value;
};

/// The keys that a registration owns with everything below them.
struct OwnedKeys {
    std::vector<std::wstring> of_this_platform;
    std::vector<std::wstring> of_both;  ///< kept as long as the other bitness is registered
};

struct Interface {
    REFGUID identifier;
    const wchar_t* name;
};

struct Library {
    REFGUID identifier;
    const wchar_t* version;
    const wchar_t* title;
    const wchar_t* resource;  ///< which library of the file it is
    std::vector<Interface> interfaces;
};

std::vector<Library> libraries() {
    return {
        {LIBID_Vantlo, L"3.0", L"Vantlo stock ledger 3.0", L"", {{IID__Inventory_Class, L"_Inventory_Class"}}},
        {LIBID_Corvane,
         L"1.0",
         L"Corvane bill lines 1.0",
         L"\\2",
         {{IID__StockBillItemObject, L"_StockBillItemObject"},
          {IID__LossOverItemObject, L"_LossOverItemObject"},
          {IID__RGStockItemObject, L"_RGStockItemObject"},
          {IID__BorrowItemObject, L"_BorrowItemObject"}}},
    };
}

std::wstring class_key() { return L"CLSID\\" + braced(CLSID_Inventory_Class); }
std::wstring interface_key(const Interface& entry) { return L"Interface\\" + braced(entry.identifier); }
std::wstring library_key(const Library& library) { return L"TypeLib\\" + braced(library.identifier); }
std::wstring library_file_key(const Library& library, const wchar_t* locale, const wchar_t* of_platform) {
    return library_key(library) + L"\\" + library.version + L"\\" + locale + L"\\" + of_platform;
}

std::vector<Row> rows_for(const std::wstring& path) {
    const std::wstring identifier = braced(CLSID_Inventory_Class);
    const std::wstring folder = path.substr(0, path.find_last_of(L'\\'));
    const std::wstring server = class_key() + L"\\InprocServer32";
    std::vector<Row> rows = {
        {class_name, nullptr, class_name},
        {std::wstring(class_name) + L"\\CLSID", nullptr, identifier},
        {std::wstring(class_name) + L"\\CurVer", nullptr, versioned_class_name},
        {versioned_class_name, nullptr, class_name},
        {std::wstring(versioned_class_name) + L"\\CLSID", nullptr, identifier},
        {class_key(), nullptr, class_name},
        {server, nullptr, path},
        {server, L"ThreadingModel", L"Apartment"},
        {class_key() + L"\\ProgID", nullptr, versioned_class_name},
        {class_key() + L"\\VersionIndependentProgID", nullptr, class_name},
        {class_key() + L"\\TypeLib", nullptr, braced(LIBID_Vantlo)},
        {class_key() + L"\\Version", nullptr, L"3.0"},
        {class_key() + L"\\Programmable", nullptr, L""},
    };
    for (const Library& library : libraries()) {
        const std::wstring version = library_key(library) + L"\\" + library.version;
        rows.push_back({version, nullptr, library.title});
        rows.push_back({version + L"\\FLAGS", nullptr, L"0"});
        rows.push_back({version + L"\\HELPDIR", nullptr, folder});
        for (const wchar_t* locale : locales) {
            rows.push_back({library_file_key(library, locale, platform), nullptr, path + library.resource});
        }
        for (const Interface& entry : library.interfaces) {
            rows.push_back({interface_key(entry), nullptr, entry.name});
            rows.push_back({interface_key(entry) + L"\\ProxyStubClsid32", nullptr, automation_proxy});
            rows.push_back({interface_key(entry) + L"\\TypeLib", nullptr, braced(library.identifier)});
            rows.push_back({interface_key(entry) + L"\\TypeLib", L"Version", library.version});
        }
    }
    return rows;
}

OwnedKeys owned_keys() {
    OwnedKeys keys;
    keys.of_this_platform = {class_key()};
    keys.of_both = {class_name, versioned_class_name};
    for (const Library& library : libraries()) {
        for (const Interface& entry : library.interfaces) keys.of_this_platform.push_back(interface_key(entry));
        for (const wchar_t* locale : locales) {
            keys.of_this_platform.push_back(library_file_key(library, locale, platform));
        }
        keys.of_both.push_back(library_key(library));
    }
    return keys;
}

/// An open key of the registry.
class Key {
public:
    /// Errors   a key that cannot be opened or made is not `open`.
    explicit Key(RegistrationScope scope) {
        const HKEY root = scope == RegistrationScope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
        status_ = RegCreateKeyExW(root, L"Software\\Classes", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (is_open()) RegCloseKey(key_);
    }

    [[nodiscard]] bool is_open() const { return status_ == ERROR_SUCCESS; }
    [[nodiscard]] LSTATUS status() const { return status_; }

    [[nodiscard]] LSTATUS set(const Row& row) const {
        const auto size = static_cast<DWORD>((row.value.size() + 1) * sizeof(wchar_t));
        return RegSetKeyValueW(key_, row.key.c_str(), row.name, REG_SZ, row.value.c_str(), size);
    }

    [[nodiscard]] bool has(const std::wstring& below) const {
        HKEY found = nullptr;
        if (RegOpenKeyExW(key_, below.c_str(), 0, KEY_READ, &found) != ERROR_SUCCESS) return false;
        RegCloseKey(found);
        return true;
    }

    void remove_if_empty(const wchar_t* below) const { RegDeleteKeyW(key_, below); }

    /// Removes a key with everything below it; one that is not there counts as removed.
    [[nodiscard]] LSTATUS remove(const std::wstring& below) const {
        const LSTATUS status = RegDeleteTreeW(key_, below.c_str());
        return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
    }

private:
    HKEY key_ = nullptr;
    LSTATUS status_ = ERROR_SUCCESS;
};

LSTATUS remove_all(const Key& classes) {
    const OwnedKeys keys = owned_keys();
    LSTATUS first_failure = ERROR_SUCCESS;
    const auto remove = [&](const std::vector<std::wstring>& owned) {
        for (const std::wstring& key : owned) {
            const LSTATUS status = classes.remove(key);
            if (first_failure == ERROR_SUCCESS) first_failure = status;
        }
    };
    remove(keys.of_this_platform);
    // Both bitnesses see the same type libraries; the other one's entry there tells that it is still registered.
    if (!classes.has(library_file_key(libraries().front(), locales[0], other_platform))) remove(keys.of_both);
    // A user's own classes may have had none of these before; one that holds anything else stays.
    for (const wchar_t* container : {L"CLSID", L"Interface", L"TypeLib"}) classes.remove_if_empty(container);
    return first_failure;
}

}  // namespace

HRESULT register_component(RegistrationScope scope, const std::wstring& path) {
    const Key classes(scope);
    if (!classes.is_open()) return HRESULT_FROM_WIN32(static_cast<DWORD>(classes.status()));
    for (const Row& row : rows_for(path)) {
        const LSTATUS status = classes.set(row);
        if (status == ERROR_SUCCESS) continue;
        remove_all(classes);
        return SELFREG_E_CLASS;
    }
    return S_OK;
}

HRESULT unregister_component(RegistrationScope scope) {
    const Key classes(scope);
    if (!classes.is_open()) return HRESULT_FROM_WIN32(static_cast<DWORD>(classes.status()));
    return remove_all(classes) == ERROR_SUCCESS ? S_OK : SELFREG_E_CLASS;
}

}  // namespace vantlo
