#pragma once

#include <ocidl.h>
#include <vantlo.h>  // made from com/idl/vantlo.idl

#include <array>
#include <concepts>
#include <vector>

#include "ado/com/automation_value.h"
#include "com/automation_line.h"
#include "com/call_frame.h"
#include "component/inventory_class.h"

namespace vantlo {

/// IProvideClassInfo, whose member's name is a macro of winuser.h: the system's header gives it one name or the other by
/// the order of includes.
struct ClassInformationProvider : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE class_information(ITypeInfo** information) = 0;
};

/// The class as COM knows it: every member through the vtable and through IDispatch.
///
/// A posting that fails is a successful call whose result is the error's number. Only a misuse of COM itself is an
/// HRESULT. No exception leaves it.
class InventoryObject final : public _Inventory_Class, public ClassInformationProvider, public ISupportErrorInfo {
public:
    InventoryObject();
    InventoryObject(const InventoryObject&) = delete;
    InventoryObject& operator=(const InventoryObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID identifier, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** information) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* identifiers) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID identifier, REFIID reserved, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* wrong_argument) override;

    HRESULT STDMETHODCALLTYPE class_information(ITypeInfo** information) override;
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID identifier) override;

    HRESULT STDMETHODCALLTYPE get_DATAType(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_DATAType(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_ADOConn(_Connection** value) override;
    HRESULT STDMETHODCALLTYPE putref_ADOConn(_Connection* value) override;

    HRESULT STDMETHODCALLTYPE AddInventory_Db(_StockBillItemObject** objBillItems, LONG* result) override {
        return post(4, result, objBillItems);
    }
    HRESULT STDMETHODCALLTYPE ReduceInventory_Db(BSTR* cId, LONG* result) override { return post(5, result, cId); }
    HRESULT STDMETHODCALLTYPE In_AddInventory(_StockBillItemObject** objBillItems, short* iCPZT,
                                              LONG* result) override {
        return post(6, result, objBillItems, iCPZT);
    }
    HRESULT STDMETHODCALLTYPE In_ReduceInventory(BSTR* cId, BSTR* sZLID, short* iZYCP, short* iCPZT,
                                                 LONG* result) override {
        return post(7, result, cId, sZLID, iZYCP, iCPZT);
    }
    HRESULT STDMETHODCALLTYPE Out_AddInventory(BSTR* cId, VARIANT_BOOL* bUseAbs, short* iCPZT, LONG* result) override {
        return post(8, result, cId, bUseAbs, iCPZT);
    }
    HRESULT STDMETHODCALLTYPE Out_ReduceInventory(_StockBillItemObject** objBillItems, VARIANT_BOOL* bUseAbs,
                                                  short* iCPZT, LONG* result) override {
        return post(9, result, objBillItems, bUseAbs, iCPZT);
    }
    HRESULT STDMETHODCALLTYPE Loss_ReduceInventory(_LossOverItemObject** objBillItems, short* iGoodsStatus,
                                                   LONG* result) override {
        return post(10, result, objBillItems, iGoodsStatus);
    }
    HRESULT STDMETHODCALLTYPE Loss_AddInventory(BSTR* cId, LONG* result) override { return post(11, result, cId); }
    HRESULT STDMETHODCALLTYPE Over_AddInventory(_LossOverItemObject** objBillItems, short* iGoodsStatus,
                                                LONG* result) override {
        return post(12, result, objBillItems, iGoodsStatus);
    }
    HRESULT STDMETHODCALLTYPE Over_ReduceInventory(BSTR* cId, LONG* result) override { return post(13, result, cId); }
    HRESULT STDMETHODCALLTYPE RG_AddInventory_Db(_RGStockItemObject** objBillItems, BSTR* Receiver, BSTR* Supplier,
                                                 LONG* result) override {
        return post(14, result, objBillItems, Receiver, Supplier);
    }
    HRESULT STDMETHODCALLTYPE RG_ReduceInventory_Db(BSTR* cId, LONG* result) override { return post(15, result, cId); }
    HRESULT STDMETHODCALLTYPE RG_In_AddInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(16, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE RG_In_AddInventoryStatus(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(17, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE RG_In_ReduceInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(18, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE RG_In_ReduceInventoryStatus(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(19, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE RG_Out_AddInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(20, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE RG_Out_ReduceInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(21, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE Hj_AddInventory_Db(_RGStockItemObject** objBillItems, BSTR* Receiver, BSTR* Supplier,
                                                 LONG* result) override {
        return post(22, result, objBillItems, Receiver, Supplier);
    }
    HRESULT STDMETHODCALLTYPE Hj_ReduceInventory_Db(BSTR* cId, LONG* result) override { return post(23, result, cId); }
    HRESULT STDMETHODCALLTYPE XFP_In_ReduceInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(24, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE XFP_In_AddInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(25, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE XFP_Out_ReduceInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(26, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE XFP_Out_AddInventory(_RGStockItemObject** rgsStockItemObj, LONG* result) override {
        return post(27, result, rgsStockItemObj);
    }
    HRESULT STDMETHODCALLTYPE GoodsConvert_AddItems_ChangeInventory(_StockBillItemObject** objBillItem,
                                                                    LONG* enumConvertType, LONG* result) override {
        return post(28, result, objBillItem, enumConvertType);
    }
    HRESULT STDMETHODCALLTYPE GoodsConvert_DelItems_ChangeInventory(BSTR* cBillid, LONG* result) override {
        return post(29, result, cBillid);
    }
    HRESULT STDMETHODCALLTYPE SaleIn_AddInventory(_StockBillItemObject** objBillItems, LONG* result) override {
        return post(30, result, objBillItems);
    }
    HRESULT STDMETHODCALLTYPE SaleIn_ReduceInventory(BSTR* cId, LONG* result) override { return post(31, result, cId); }
    HRESULT STDMETHODCALLTYPE BorrowOut_AddInventory(_BorrowItemObject** objBillItems, LONG* result) override {
        return post(32, result, objBillItems);
    }
    HRESULT STDMETHODCALLTYPE BorrowOut_ReduceInventory(BSTR* cId, LONG* result) override {
        return post(33, result, cId);
    }
    HRESULT STDMETHODCALLTYPE BorrowIn_AddInventory(_BorrowItemObject** objBillItems, LONG* result) override {
        return post(34, result, objBillItems);
    }
    HRESULT STDMETHODCALLTYPE BorrowIn_ReduceInventory(BSTR* cId, LONG* result) override {
        return post(35, result, cId);
    }
    HRESULT STDMETHODCALLTYPE AddInventory_ZZD_ZJ(BSTR* cId, LONG* result) override { return post(36, result, cId); }
    HRESULT STDMETHODCALLTYPE AddInventory_ZZD_MJ(BSTR* cId, LONG* result) override { return post(37, result, cId); }
    HRESULT STDMETHODCALLTYPE ReduceInventory_ZZD_ZJ(BSTR* cId, LONG* result) override { return post(38, result, cId); }
    HRESULT STDMETHODCALLTYPE ReduceInventory_ZZD_MJ(BSTR* cId, LONG* result) override { return post(39, result, cId); }
    HRESULT STDMETHODCALLTYPE AddInventory_CXD_ZJ(BSTR* cId, LONG* result) override { return post(40, result, cId); }
    HRESULT STDMETHODCALLTYPE AddInventory_CXD_MJ(BSTR* cId, LONG* result) override { return post(41, result, cId); }
    HRESULT STDMETHODCALLTYPE ReduceInventory_CXD_ZJ(BSTR* cId, LONG* result) override { return post(42, result, cId); }
    HRESULT STDMETHODCALLTYPE ReduceInventory_CXD_MJ(BSTR* cId, LONG* result) override { return post(43, result, cId); }

    /// Calls a posting method with arguments of its parameters' types.
    LONG call(const Member& member, std::span<const Argument> arguments) noexcept {
        return component_.call(member, arguments);
    }

private:
    ~InventoryObject() = default;

    /// One argument as it comes through the vtable: always by reference.
    struct Incoming {
        template <std::derived_from<IDispatch> LineObject>
        Incoming(const Parameter& parameter, LineObject** object) : line(*object, parameter.line_type), is_line(true) {}
        Incoming(const Parameter&, const BSTR* text) : value(text_of(*text)) {}
        Incoming(const Parameter&, const short* number) : value(std::int16_t{*number}) {}
        Incoming(const Parameter&, const LONG* number) : value(static_cast<std::int32_t>(*number)) {}

        Variant value;
        AutomationLine line{nullptr, LineType::none};
        bool is_line = false;
    };

    /// The road of every method through the vtable. Errors: E_POINTER for a null pointer among them, E_OUTOFMEMORY.
    template <typename... Pointers>
    HRESULT post(std::size_t number, LONG* result, Pointers... pointers) noexcept {
        return framed_call([&] {
            if (result == nullptr || ((pointers == nullptr) || ...)) return E_POINTER;
            const InterfacePointer<_Inventory_Class> held(this);  // the host may release the object during the call
            const Member& member = member_table()[number];
            const Parameter* parameter = member.parameter_slots.data();  // braces fill in order, a slot an argument
            std::array<Incoming, sizeof...(Pointers)> incoming{Incoming(*parameter++, pointers)...};
            std::vector<Argument> arguments;
            for (Incoming& argument : incoming) {
                if (argument.is_line) {
                    arguments.emplace_back(argument.line);
                } else {
                    arguments.emplace_back(std::move(argument.value));
                }
            }
            *result = call(member, arguments);
            return S_OK;
        });
    }

    long references_ = 1;
    Inventory_Class component_;
};

}  // namespace vantlo
