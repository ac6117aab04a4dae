#include "com/registration.h"

#include <olectl.h>
#include <vantlo.h>  // made from com/idl/vantlo.idl

#include <algorithm>
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
std::wstring version_key(const Library& library) { return library_key(library) + L"\\" + library.version; }
std::wstring locale_key(const Library& library, const wchar_t* locale) { return version_key(library) + L"\\" + locale; }
std::wstring library_file_key(const Library& library, const wchar_t* locale, const wchar_t* of_platform) {
    return locale_key(library, locale) + L"\\" + of_platform;
}

/// What makes the class known.
std::vector<Row> class_rows(const std::wstring& path) {
    const std::wstring identifier = braced(CLSID_Inventory_Class);
    const std::wstring server = class_key() + L"\\InprocServer32";
    return {
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
}

/// What makes one of the file's type libraries known, and its interfaces.
std::vector<Row> library_rows(const Library& library, const std::wstring& path) {
    const std::wstring version = version_key(library);
    std::vector<Row> rows = {
        {version, nullptr, library.title},
        {version + L"\\FLAGS", nullptr, L"0"},
        {version + L"\\HELPDIR", nullptr, path.substr(0, path.find_last_of(L'\\'))},
    };
    for (const wchar_t* locale : locales) {
        rows.push_back({library_file_key(library, locale, platform), nullptr, path + library.resource});
    }
    for (const Interface& entry : library.interfaces) {
        rows.push_back({interface_key(entry), nullptr, entry.name});
        rows.push_back({interface_key(entry) + L"\\ProxyStubClsid32", nullptr, automation_proxy});
        rows.push_back({interface_key(entry) + L"\\TypeLib", nullptr, braced(library.identifier)});
        rows.push_back({interface_key(entry) + L"\\TypeLib", L"Version", library.version});
    }
    return rows;
}

/// Whether two texts are the same path, or the same identifier.
bool equal(const std::wstring& left, const std::wstring& right) { return lstrcmpiW(left.c_str(), right.c_str()) == 0; }

std::wstring file_name(const std::wstring& path) { return path.substr(path.find_last_of(L'\\') + 1); }

/// An open key of the registry. What is named below it is named by its path from there.
class Key {
public:
    /// Errors   a key that cannot be opened or made is not `open`.
    Key(HKEY root, const wchar_t* path) {
        status_ = RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr);
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
    [[nodiscard]] LSTATUS set(const std::vector<Row>& rows) const {
        for (const Row& row : rows) {
            const LSTATUS status = set(row);
            if (status != ERROR_SUCCESS) return status;
        }
        return ERROR_SUCCESS;
    }
    [[nodiscard]] LSTATUS set_number(const wchar_t* below, const wchar_t* name, DWORD value) const {
        return RegSetKeyValueW(key_, below, name, REG_DWORD, &value, sizeof value);
    }

    [[nodiscard]] bool has(const std::wstring& below) const {
        HKEY found = nullptr;
        if (RegOpenKeyExW(key_, below.c_str(), 0, KEY_READ, &found) != ERROR_SUCCESS) return false;
        RegCloseKey(found);
        return true;
    }

    /// The names of the keys right below.
    [[nodiscard]] std::vector<std::wstring> keys_of(const std::wstring& below) const {
        std::vector<std::wstring> names;
        HKEY found = nullptr;
        if (RegOpenKeyExW(key_, below.c_str(), 0, KEY_READ, &found) != ERROR_SUCCESS) return names;
        wchar_t name[256];  // no key's name is longer
        for (DWORD i = 0, length = 256; RegEnumKeyExW(found, i, name, &length, nullptr, nullptr, nullptr, nullptr) == 0;
             ++i, length = 256) {
            names.emplace_back(name);
        }
        RegCloseKey(found);
        return names;
    }

    /// A text; empty where there is none.
    [[nodiscard]] std::wstring text(const std::wstring& below, const wchar_t* name = nullptr) const {
        DWORD size = 0;
        const auto read = [&](wchar_t* into) {
            return RegGetValueW(key_, below.c_str(), name, RRF_RT_REG_SZ, nullptr, into, &size);
        };
        if (read(nullptr) != ERROR_SUCCESS) return {};
        std::wstring value(size / sizeof(wchar_t), L'\0');
        if (read(value.data()) != ERROR_SUCCESS) return {};
        return value.c_str();
    }

    /// Removes a key that has no keys below it.
    void remove_leaf(const std::wstring& below) const { RegDeleteKeyW(key_, below.c_str()); }

    /// Removes a key with everything below it; one that is not there counts as removed.
    [[nodiscard]] LSTATUS remove(const std::wstring& below) const {
        const LSTATUS status = RegDeleteTreeW(key_, below.c_str());
        return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
    }

private:
    HKEY key_ = nullptr;
    LSTATUS status_ = ERROR_SUCCESS;
};

/// The classes of everyone, or of the current user.
Key classes_of(RegistrationScope scope) {
    return {scope == RegistrationScope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER, L"Software\\Classes"};
}

/// Whether a type library is registered in another file that is there, and no copy of the component.
bool is_of_another(const Key& classes, const Library& library, const std::wstring& path) {
    const std::wstring file = classes.text(library_file_key(library, locales[0], platform));
    if (file.empty() || equal(file, path + library.resource)) return false;
    return GetFileAttributesW(file.c_str()) != INVALID_FILE_ATTRIBUTES && !equal(file_name(file), file_name(path));
}

/// Whether a type library is registered for the other bitness.
bool has_other_platform(const Key& classes, const Library& library) {
    return classes.has(library_file_key(library, locales[0], other_platform));
}

LSTATUS remove_library(const Key& classes, const Library& library, const std::wstring& path) {
    const std::wstring registered = classes.text(library_file_key(library, locales[0], platform));
    if (!registered.empty() && !equal(registered, path + library.resource)) return ERROR_SUCCESS;
    LSTATUS first_failure = ERROR_SUCCESS;
    const auto remove = [&](const std::wstring& key) {
        const LSTATUS status = classes.remove(key);
        if (first_failure == ERROR_SUCCESS) first_failure = status;
    };
    for (const Interface& entry : library.interfaces) {
        const std::wstring named = classes.text(interface_key(entry) + L"\\TypeLib");
        if (named.empty() || equal(named, braced(library.identifier))) remove(interface_key(entry));
    }
    for (const wchar_t* locale : locales) {
        remove(library_file_key(library, locale, platform));
        classes.remove_leaf(locale_key(library, locale));
    }
    // Another locale's file, the other bitness, or another version of the library stays.
    const std::vector<std::wstring> left = classes.keys_of(version_key(library));
    const bool in_use = std::ranges::any_of(
        left, [](const std::wstring& key) { return !equal(key, L"FLAGS") && !equal(key, L"HELPDIR"); });
    if (!in_use) remove(version_key(library));
    classes.remove_leaf(library_key(library));
    return first_failure;
}

LSTATUS remove_class(const Key& classes, const std::wstring& path) {
    const std::wstring registered = classes.text(class_key() + L"\\InprocServer32");
    if (!registered.empty() && !equal(registered, path)) return ERROR_SUCCESS;
    LSTATUS first_failure = classes.remove(class_key());
    // Both bitnesses see the same names, and the same type libraries, which tell that the other one is registered.
    if (has_other_platform(classes, libraries().front())) return first_failure;
    for (const wchar_t* name : {class_name, versioned_class_name}) {
        const LSTATUS status = classes.remove(name);
        if (first_failure == ERROR_SUCCESS) first_failure = status;
    }
    return first_failure;
}

LSTATUS remove_all(const Key& classes, const std::wstring& path) {
    LSTATUS first_failure = remove_class(classes, path);
    for (const Library& library : libraries()) {
        const LSTATUS status = remove_library(classes, library, path);
        if (first_failure == ERROR_SUCCESS) first_failure = status;
    }
    // A user's own classes may have had none of these before; one that holds anything else stays.
    for (const wchar_t* container : {L"CLSID", L"Interface", L"TypeLib"}) classes.remove_leaf(container);
    return first_failure;
}

LSTATUS add_all(const Key& classes, const std::wstring& path) {
    const LSTATUS status = classes.set(class_rows(path));
    if (status != ERROR_SUCCESS) return status;
    for (const Library& library : libraries()) {
        // The line objects' library may have come with the objects themselves.
        if (is_of_another(classes, library, path)) continue;
        const LSTATUS of_library = classes.set(library_rows(library, path));
        if (of_library != ERROR_SUCCESS) return of_library;
    }
    return ERROR_SUCCESS;
}

/// The event sources of the machine. The event log finds a source's texts by the file that is named there.
Key event_sources() { return {HKEY_LOCAL_MACHINE, event_sources_key}; }

LSTATUS add_event_source(const std::wstring& path) {
    const Key sources = event_sources();
    if (!sources.is_open()) return sources.status();
    constexpr DWORD all_types = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
    const LSTATUS status = sources.set(Row{event_source, L"EventMessageFile", path});
    return status != ERROR_SUCCESS ? status : sources.set_number(event_source, L"TypesSupported", all_types);
}

/// Takes the event source away, or hands it to the component of the other bitness.
LSTATUS remove_event_source(const Key& classes, const std::wstring& path) {
    const Key sources = event_sources();
    if (!sources.is_open()) return sources.status();
    if (!equal(sources.text(event_source, L"EventMessageFile"), path)) return ERROR_SUCCESS;
    const std::wstring other = classes.text(library_file_key(libraries().front(), locales[0], other_platform));
    return other.empty() ? sources.remove(event_source) : sources.set(Row{event_source, L"EventMessageFile", other});
}

}  // namespace

HRESULT register_component(RegistrationScope scope, const std::wstring& path) {
    const Key classes = classes_of(scope);
    if (!classes.is_open()) return HRESULT_FROM_WIN32(static_cast<DWORD>(classes.status()));
    LSTATUS status = add_all(classes, path);
    // A user has no event sources of their own.
    if (status == ERROR_SUCCESS && scope == RegistrationScope::machine) status = add_event_source(path);
    if (status == ERROR_SUCCESS) return S_OK;
    unregister_component(scope, path);
    return SELFREG_E_CLASS;
}

HRESULT unregister_component(RegistrationScope scope, const std::wstring& path) {
    const Key classes = classes_of(scope);
    if (!classes.is_open()) return HRESULT_FROM_WIN32(static_cast<DWORD>(classes.status()));
    LSTATUS status = remove_all(classes, path);
    if (scope == RegistrationScope::machine) {
        const LSTATUS of_source = remove_event_source(classes, path);
        if (status == ERROR_SUCCESS) status = of_source;
    }
    return status == ERROR_SUCCESS ? S_OK : SELFREG_E_CLASS;
}

}  // namespace vantlo
