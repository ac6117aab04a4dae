#include <doctest/doctest.h>

#include <set>
#include <stdexcept>
#include <utility>

#include "component/member_table.h"
#include "tests/com/component_library.h"
#include "tests/support/com/script_host.h"
#include "tests/support/printing.h"

// The built type libraries, read back as hosts' compilers read them.

namespace vantlo::test {
namespace {

/// A library out of the component's file. Errors: std::runtime_error.
ComPointer<ITypeLib> library_in_component(const wchar_t* resource) {
    ComPointer<ITypeLib> library;
    const HRESULT status = LoadTypeLibEx((ComponentLibrary::path() + resource).c_str(), REGKIND_NONE, library.out());
    if (FAILED(status)) throw std::runtime_error("the type library cannot be read: " + std::to_string(status));
    return library;
}

ComPointer<ITypeInfo> type_in(ITypeLib& library, REFGUID identifier) {
    ComPointer<ITypeInfo> type;
    REQUIRE(library.GetTypeInfoOfGuid(identifier, type.out()) == S_OK);
    return type;
}

/// What a type or a library says of itself under a member's identifier.
struct Documentation {
    Text name;
    Text help;
};

template <typename Type>
Documentation documentation_of(Type& type, LONG member) {
    BSTR name = nullptr, help = nullptr;
    REQUIRE(type.GetDocumentation(member, &name, &help, nullptr, nullptr) == S_OK);
    Documentation found = {text_of(name), text_of(help)};
    SysFreeString(name);
    SysFreeString(help);
    return found;
}

/// What a dual interface inherits.
constexpr int dispatch_slots = 7;

constexpr VARTYPE pointed_types[] = {VT_EMPTY, VT_USERDEFINED, VT_BSTR, VT_I2, VT_BOOL, VT_I4};

INVOKEKIND invoke_kind(MemberKind kind) {
    switch (kind) {
        case MemberKind::property_get: return INVOKE_PROPERTYGET;
        case MemberKind::property_let: return INVOKE_PROPERTYPUT;
        case MemberKind::property_set: return INVOKE_PROPERTYPUTREF;
        default: return INVOKE_FUNC;
    }
}

Text name_of_referred(ITypeInfo& type, HREFTYPE reference) {
    ComPointer<ITypeInfo> referred;
    const HRESULT status = type.GetRefTypeInfo(reference, referred.out());
    REQUIRE_MESSAGE(status == S_OK, "a type of another library is not found: " << status);
    return documentation_of(*referred.get(), MEMBERID_NIL).name;
}

Text name_of_line(LineType type) {
    constexpr const char16_t* names[] = {u"", u"_StockBillItemObject", u"_LossOverItemObject", u"_RGStockItemObject",
                                         u"_BorrowItemObject"};
    return names[static_cast<std::size_t>(type)];
}

/// A parameter by reference, with the default that the member table gives it.
void check_parameter(ITypeInfo& type, const ELEMDESC& described, const Parameter& parameter) {
    REQUIRE(described.tdesc.vt == VT_PTR);
    const TYPEDESC& pointed = *described.tdesc.lptdesc;
    if (parameter.type == ParameterType::line) {
        REQUIRE(pointed.vt == VT_PTR);
        REQUIRE(pointed.lptdesc->vt == VT_USERDEFINED);
        CHECK(name_of_referred(type, pointed.lptdesc->hreftype) == name_of_line(parameter.line_type));
    } else {
        CHECK(pointed.vt == pointed_types[static_cast<std::size_t>(parameter.type)]);
    }
    USHORT flags = PARAMFLAG_FIN | PARAMFLAG_FOUT;
    if (parameter.optional) flags |= PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT;
    CHECK(described.paramdesc.wParamFlags == flags);
    if (!parameter.optional) return;
    const VARIANT& given = described.paramdesc.pparamdescex->varDefaultValue;
    CHECK(given.vt == pointed.vt);
    if (parameter.type == ParameterType::text) {
        CHECK(text_of(given.bstrVal) == Text());
    } else {
        CHECK(given.iVal == parameter.default_number);
    }
}

void check_member(ITypeInfo& type, const FUNCDESC& described, const Member& member) {
    CHECK(static_cast<DWORD>(described.memid) == member.dispatch_id);
    CHECK(described.oVft == static_cast<SHORT>((dispatch_slots + member.number) * static_cast<int>(sizeof(void*))));
    CHECK(described.invkind == invoke_kind(member.kind));
    CHECK(described.callconv == CC_STDCALL);
    CHECK(described.elemdescFunc.tdesc.vt == VT_HRESULT);
    const Documentation documentation = documentation_of(type, described.memid);
    CHECK(documentation.name == member.name);
    CHECK(!documentation.help.empty());
    if (member.kind != MemberKind::method) {
        REQUIRE(described.cParams == 1);
        const ELEMDESC& value = described.lprgelemdescParam[0];
        const bool is_get = member.kind == MemberKind::property_get;
        CHECK(value.paramdesc.wParamFlags == (is_get ? PARAMFLAG_FOUT | PARAMFLAG_FRETVAL : PARAMFLAG_FIN));
        const TYPEDESC& carried = is_get ? *value.tdesc.lptdesc : value.tdesc;
        CHECK(carried.vt == (TextView(member.name) == u"DATAType" ? VT_BSTR : VT_PTR));
        if (carried.vt == VT_PTR) CHECK(name_of_referred(type, carried.lptdesc->hreftype) == u"_Connection");
        return;
    }
    const auto parameters = member.parameters();
    REQUIRE(static_cast<std::size_t>(described.cParams) == parameters.size() + 1);
    const ELEMDESC& result = described.lprgelemdescParam[parameters.size()];
    CHECK(result.paramdesc.wParamFlags == (PARAMFLAG_FOUT | PARAMFLAG_FRETVAL));
    CHECK(result.tdesc.lptdesc->vt == VT_I4);
    BSTR names[1 + Member::most_parameters + 1] = {};
    UINT count = 0;
    REQUIRE(type.GetNames(described.memid, names, std::size(names), &count) == S_OK);
    CHECK(count >= 1 + parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        INFO(to_utf8(parameters[i].name));
        CHECK(text_of(names[1 + i]) == parameters[i].name);
        check_parameter(type, described.lprgelemdescParam[i], parameters[i]);
    }
    for (BSTR name : names) SysFreeString(name);
}

/// The libraries that the component's refers to: the lines, and a stand-in for ADO's. They are found while they are loaded.
struct Libraries {
    static ComPointer<ITypeLib> file(const char* name) {
        ComPointer<ITypeLib> library;
        const Text path = windows_path(std::string(VANTLO_TYPELIBS) + "/" + name);
        REQUIRE(LoadTypeLibEx(std::wstring(path.begin(), path.end()).c_str(), REGKIND_NONE, library.out()) == S_OK);
        return library;
    }

    Apartment apartment;
    ComPointer<ITypeLib> ado = file("msado26.tlb");
    ComPointer<ITypeLib> lines = library_in_component(L"\\2");
    ComPointer<ITypeLib> component = library_in_component(L"");
};

TEST_CASE_FIXTURE(Libraries, "The type library has every member as the member table has it") {
    const ComPointer<ITypeInfo> dispatch = type_in(*component.get(), IID__Inventory_Class);
    HREFTYPE reference = 0;
    REQUIRE(dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference) == S_OK);
    ComPointer<ITypeInfo> type;
    REQUIRE(dispatch->GetRefTypeInfo(reference, type.out()) == S_OK);

    TYPEATTR* attributes = nullptr;
    REQUIRE(type->GetTypeAttr(&attributes) == S_OK);
    CHECK(attributes->typekind == TKIND_INTERFACE);
    CHECK(attributes->guid == IID__Inventory_Class);
    constexpr WORD flags =
        TYPEFLAG_FHIDDEN | TYPEFLAG_FDUAL | TYPEFLAG_FNONEXTENSIBLE | TYPEFLAG_FOLEAUTOMATION | TYPEFLAG_FDISPATCHABLE;
    CHECK(attributes->wTypeFlags == flags);
    REQUIRE(attributes->cFuncs == member_table().size());
    type->ReleaseTypeAttr(attributes);

    for (UINT i = 0; i < member_table().size(); ++i) {
        const Member& member = member_table()[i];
        INFO(to_utf8(member.name));
        FUNCDESC* described = nullptr;
        REQUIRE(type->GetFuncDesc(i, &described) == S_OK);
        check_member(*type.get(), *described, member);
        type->ReleaseFuncDesc(described);
    }
}

TEST_CASE_FIXTURE(Libraries, "The type library is Vantlo 3.0 with one class that hosts can make") {
    TLIBATTR* attributes = nullptr;
    REQUIRE(component->GetLibAttr(&attributes) == S_OK);
    CHECK(attributes->guid == LIBID_Vantlo);
    CHECK(attributes->lcid == 0x409);
    CHECK(attributes->wMajorVerNum == 3);
    CHECK(attributes->wMinorVerNum == 0);
    CHECK(attributes->syskind == (sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32));
    component->ReleaseTLibAttr(attributes);
    const Documentation documentation = documentation_of(*component.get(), MEMBERID_NIL);
    CHECK(documentation.name == u"Vantlo");
    CHECK(!documentation.help.empty());

    const ComPointer<ITypeInfo> type = type_in(*component.get(), CLSID_Inventory_Class);
    CHECK(documentation_of(*type.get(), MEMBERID_NIL).name == u"Inventory_Class");
    CHECK(!documentation_of(*type.get(), MEMBERID_NIL).help.empty());
    TYPEATTR* class_attributes = nullptr;
    REQUIRE(type->GetTypeAttr(&class_attributes) == S_OK);
    CHECK(class_attributes->typekind == TKIND_COCLASS);
    CHECK((class_attributes->wTypeFlags & TYPEFLAG_FCANCREATE) != 0);
    REQUIRE(class_attributes->cImplTypes == 1);
    type->ReleaseTypeAttr(class_attributes);
    INT implemented = 0;
    CHECK(type->GetImplTypeFlags(0, &implemented) == S_OK);
    CHECK(implemented == IMPLTYPEFLAG_FDEFAULT);
    HREFTYPE reference = 0;
    REQUIRE(type->GetRefTypeOfImplType(0, &reference) == S_OK);
    CHECK(name_of_referred(*type.get(), reference) == u"_Inventory_Class");
}

TEST_CASE_FIXTURE(Libraries, "The line objects' library has the properties that the members read") {
    const std::pair<const GUID*, std::set<Text>> expected[] = {
        {&IID__StockBillItemObject,
         {u"Receiver", u"Supplier", u"Gid", u"Model1", u"Model2", u"Class", u"Unit", u"Actualqty", u"Qty",
          u"Goodstutas", u"Remarks"}},
        {&IID__LossOverItemObject,
         {u"WarehouseId", u"Gid", u"Model1", u"Model2", u"Class", u"Unit", u"Actualqty", u"Remarks"}},
        {&IID__RGStockItemObject,
         {u"WID", u"StatusWID", u"Gid", u"Model1", u"Model2", u"Class", u"Unit", u"Qty", u"GoodsStatus", u"SpRemarks"}},
        {&IID__BorrowItemObject,
         {u"Supplier", u"Receiver", u"Gid", u"Model1", u"Model2", u"Goodstutas", u"UQty", u"Unit", u"Class",
          u"Remarks"}},
    };
    for (const auto& [identifier, names] : expected) {
        const ComPointer<ITypeInfo> type = type_in(*lines.get(), *identifier);
        TYPEATTR* attributes = nullptr;
        REQUIRE(type->GetTypeAttr(&attributes) == S_OK);
        const UINT functions = attributes->cFuncs;
        type->ReleaseTypeAttr(attributes);
        std::set<Text> found;
        for (UINT i = 0; i < functions; ++i) {
            FUNCDESC* described = nullptr;
            REQUIRE(type->GetFuncDesc(i, &described) == S_OK);
            if ((described->wFuncFlags & FUNCFLAG_FRESTRICTED) == 0) {
                CHECK(described->invkind == INVOKE_PROPERTYGET);
                found.insert(documentation_of(*type.get(), described->memid).name);
            }
            type->ReleaseFuncDesc(described);
        }
        CHECK(found == names);
    }
}

TEST_CASE("The object's type information is that of its interface") {
    const Libraries libraries;
    const ComponentLibrary component;
    const ComPointer<_Inventory_Class> object = component.make_object();
    UINT count = 0;
    CHECK(object->GetTypeInfoCount(&count) == S_OK);
    CHECK(count == 1);
    ComPointer<ITypeInfo> type;
    REQUIRE(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.out()) == S_OK);
    CHECK(documentation_of(*type.get(), MEMBERID_NIL).name == u"_Inventory_Class");
    CHECK(object->GetTypeInfo(1, LOCALE_USER_DEFAULT, type.out()) == DISP_E_BADINDEX);
}

}  // namespace
}  // namespace vantlo::test
