#pragma once

#include <array>

#include "component/member_table.h"
#include "posting/line.h"
#include "tests/com/component_library.h"

namespace vantlo::test {

/// A line as a host's class that implements the declared interface: its getters answer, and it knows no name.
template <typename Derived, typename Interface>
class DeclaredLine : public AutomationObject<Derived, Interface> {
public:
    explicit DeclaredLine(Line& line) : line_(line) {}

    static std::span<const ScriptMember<Derived>> script_members() { return {}; }

protected:
    HRESULT read(TextView name, BSTR* value) {
        return trapped([&] { *value = new_bstr(to_text(line_.value(name))); });
    }
    HRESULT read(TextView name, float* value) {
        return trapped([&] { *value = static_cast<float>(to_double(line_.value(name))); });
    }
    HRESULT read(TextView name, LONG* value) {
        return trapped([&] { *value = to_long(line_.value(name)); });
    }

private:
    Line& line_;
};

#define VANTLO_GETTER(type, name) \
    HRESULT STDMETHODCALLTYPE get_##name(type* value) override { return read(u## #name, value); }

class StockBillItem final : public DeclaredLine<StockBillItem, _StockBillItemObject> {
public:
    using DeclaredLine::DeclaredLine;
    static std::array<IID, 1> identifiers() { return {IID__StockBillItemObject}; }
    VANTLO_GETTER(BSTR, Receiver)
    VANTLO_GETTER(BSTR, Supplier)
    VANTLO_GETTER(BSTR, Gid)
    VANTLO_GETTER(BSTR, Model1)
    VANTLO_GETTER(BSTR, Model2)
    VANTLO_GETTER(BSTR, Class)
    VANTLO_GETTER(BSTR, Unit)
    VANTLO_GETTER(float, Actualqty)
    VANTLO_GETTER(float, Qty)
    VANTLO_GETTER(LONG, Goodstutas)
    VANTLO_GETTER(BSTR, Remarks)
};

class LossOverItem final : public DeclaredLine<LossOverItem, _LossOverItemObject> {
public:
    using DeclaredLine::DeclaredLine;
    static std::array<IID, 1> identifiers() { return {IID__LossOverItemObject}; }
    VANTLO_GETTER(BSTR, WarehouseId)
    VANTLO_GETTER(BSTR, Gid)
    VANTLO_GETTER(BSTR, Model1)
    VANTLO_GETTER(BSTR, Model2)
    VANTLO_GETTER(BSTR, Class)
    VANTLO_GETTER(BSTR, Unit)
    VANTLO_GETTER(float, Actualqty)
    VANTLO_GETTER(BSTR, Remarks)
};

class RGStockItem final : public DeclaredLine<RGStockItem, _RGStockItemObject> {
public:
    using DeclaredLine::DeclaredLine;
    static std::array<IID, 1> identifiers() { return {IID__RGStockItemObject}; }
    VANTLO_GETTER(BSTR, WID)
    VANTLO_GETTER(BSTR, StatusWID)
    VANTLO_GETTER(BSTR, Gid)
    VANTLO_GETTER(BSTR, Model1)
    VANTLO_GETTER(BSTR, Model2)
    VANTLO_GETTER(BSTR, Class)
    VANTLO_GETTER(BSTR, Unit)
    VANTLO_GETTER(float, Qty)
    VANTLO_GETTER(LONG, GoodsStatus)
    VANTLO_GETTER(BSTR, SpRemarks)
};

class BorrowItem final : public DeclaredLine<BorrowItem, _BorrowItemObject> {
public:
    using DeclaredLine::DeclaredLine;
    static std::array<IID, 1> identifiers() { return {IID__BorrowItemObject}; }
    VANTLO_GETTER(BSTR, Supplier)
    VANTLO_GETTER(BSTR, Receiver)
    VANTLO_GETTER(BSTR, Gid)
    VANTLO_GETTER(BSTR, Model1)
    VANTLO_GETTER(BSTR, Model2)
    VANTLO_GETTER(LONG, Goodstutas)
    VANTLO_GETTER(float, UQty)
    VANTLO_GETTER(BSTR, Unit)
    VANTLO_GETTER(BSTR, Class)
    VANTLO_GETTER(BSTR, Remarks)
};

#undef VANTLO_GETTER

/// A line that implements the interface which a parameter declares.
inline ComPointer<IDispatch> make_declared_line(LineType type, Line& line) {
    switch (type) {
        case LineType::StockBillItemObject: return ComPointer<IDispatch>(new StockBillItem(line));
        case LineType::LossOverItemObject: return ComPointer<IDispatch>(new LossOverItem(line));
        case LineType::RGStockItemObject: return ComPointer<IDispatch>(new RGStockItem(line));
        case LineType::BorrowItemObject: return ComPointer<IDispatch>(new BorrowItem(line));
        default: return nullptr;
    }
}

}  // namespace vantlo::test
