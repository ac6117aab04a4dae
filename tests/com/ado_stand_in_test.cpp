#include <doctest/doctest.h>

#include "ado/native/native_connection.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/script_host.h"
#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_database.h"

// The stand-in is what every test of the component stands on, so it is tested first.

namespace vantlo::test {
namespace {

struct StandInFixture {
    StandInFixture() : connection(new AdoConnection(database->connection())) {}

    void run(TextView statement) { database->connection().run(statement); }

    ComPointer<_ADORecordset> execute(TextView statement) {
        ComPointer<_ADORecordset> rows;
        VARIANT not_requested = missing_argument();
        CHECK(connection->Execute(OwnedBstr(statement).get(), &not_requested, adOptionUnspecified, rows.out()) == S_OK);
        return rows;
    }

    std::unique_ptr<TestDatabase> database = make_sqlite_database();
    ComPointer<_ADOConnection> connection;
};

OwnedVariant value_of(_ADORecordset& rows, TextView name) {
    ComPointer<ADOFields> fields;
    REQUIRE(rows.get_Fields(fields.out()) == S_OK);
    ComPointer<ADOField> field;
    const OwnedVariant index{Variant(Text(name))};
    REQUIRE(fields->get_Item(*index, field.out()) == S_OK);
    OwnedVariant value;
    REQUIRE(field->get_Value(value.get()) == S_OK);
    return value;
}

TEST_CASE_FIXTURE(StandInFixture, "The ADO stand-in gives each field the type that its column is declared with") {
    run(u"create table Types(a real, b money, c smallint, d int, e float, f date, g nvarchar(9), h bit, i int)");
    run(u"insert into Types values(1.5,2.25,3,4,5.5,'2024-03-05','箱𠮷',1,null)");
    const auto rows = execute(u"select * from Types");
    constexpr VARTYPE expected[] = {VT_R4, VT_CY, VT_I2, VT_I4, VT_R8, VT_DATE, VT_BSTR, VT_BOOL, VT_NULL};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const Text name(1, static_cast<char16_t>(u'a' + i));
        CHECK(value_of(*rows.get(), name)->vt == expected[i]);
    }
    CHECK(value_of(*rows.get(), u"B")->cyVal.int64 == 22500);
    CHECK(text_of(value_of(*rows.get(), u"g")->bstrVal) == u"箱𠮷");
}

TEST_CASE_FIXTURE(StandInFixture, "The ADO stand-in opens a recordset on the connection that it was given") {
    run(u"insert into GoodsUnit values('G1','box',12)");
    const ComPointer<_ADORecordset> rows(new AdoRecordset(make_client_recordset()));
    LONG state = -1;
    CHECK(rows->get_State(&state) == S_OK);
    CHECK(state == adStateClosed);
    CHECK(rows->put_CursorLocation(adUseClient) == S_OK);
    CHECK(rows->put_CursorType(adOpenDynamic) == S_OK);
    CHECK(rows->putref_ActiveConnection(connection.get()) == S_OK);
    const OwnedVariant source{Variant(u"select * from GoodsUnit")};
    CHECK(rows->Open(*source, missing_argument(), adOpenUnspecified, adLockUnspecified, adCmdUnspecified) == S_OK);
    CHECK(value_of(*rows.get(), u"UnitConverter")->dblVal == 12);
    CHECK(rows->MoveNext() == S_OK);
    VARIANT_BOOL at_end = VARIANT_FALSE;
    CHECK(rows->get_EOF(&at_end) == S_OK);
    CHECK(at_end == VARIANT_TRUE);
    CHECK(rows->MoveNext() == hresult_of(error::no_current_row));
    CHECK(rows->Close() == S_OK);
    CHECK(rows->Close() == hresult_of(error::object_closed));
}

TEST_CASE("The ADO stand-in reports errors as ADO does") {
    const ComPointer<AdoConnection> closed(new AdoConnection());
    ComPointer<_ADORecordset> rows;
    const OwnedBstr statement(u"select * from Nowhere");
    VARIANT not_requested = missing_argument();
    CHECK(closed->Execute(statement.get(), &not_requested, adOptionUnspecified, rows.out()) == HRESULT(0x800A0E78));
    CHECK(FAILED(closed->Open(OwnedBstr(u"Data Source=:memory:").get(), nullptr, nullptr, adConnectUnspecified)));
    CHECK(closed->put_CursorLocation(adUseClient) == S_OK);  // asked for before it opens
    CHECK(closed->Open(OwnedBstr(u"Data Source=:memory:").get(), nullptr, nullptr, adConnectUnspecified) == S_OK);
    CHECK(closed->Execute(statement.get(), &not_requested, adOptionUnspecified, rows.out()) == HRESULT(0x80040E37));
    CHECK(rows.get() == nullptr);
}

TEST_CASE_FIXTURE(StandInFixture, "The ADO stand-in refuses arguments that the component never passes") {
    ComPointer<_ADORecordset> rows;
    OwnedVariant affected;
    VARIANT not_requested = missing_argument();
    const OwnedBstr statement(u"select 1");
    CHECK(connection->Execute(statement.get(), affected.get(), adOptionUnspecified, rows.out()) == HRESULT(0x800A0BB9));
    CHECK(connection->Execute(statement.get(), &not_requested, adCmdText, rows.out()) == HRESULT(0x800A0BB9));
}

TEST_CASE("The ADO stand-in answers to the identifiers of its generation") {
    const auto database = make_sqlite_database();
    const auto answers = [&](ConnectionGeneration generation, const IID& identifier) {
        const ComPointer<AdoConnection> connection(new AdoConnection(database->connection(), generation));
        ComPointer<IUnknown> found;
        return SUCCEEDED(connection->QueryInterface(identifier, found.out_untyped()));
    };
    CHECK(answers(ConnectionGeneration::earlier, ado::identifier_of_connection));
    CHECK_FALSE(answers(ConnectionGeneration::earlier, ado::identifier_of_later_connection));
    CHECK_FALSE(answers(ConnectionGeneration::later, ado::identifier_of_connection));
    CHECK(answers(ConnectionGeneration::later, ado::identifier_of_later_connection));
}

TEST_CASE("The ADO stand-in counts its objects and lets every one of them go") {
    const long alive = objects_alive;
    {
        StandInFixture fixture;
        fixture.run(u"insert into Goods(ID) values('G1')");
        const auto rows = fixture.execute(u"select * from Goods");
        CHECK(text_of(value_of(*rows.get(), u"ID")->bstrVal) == u"G1");
        CHECK(objects_alive > alive);
    }
    CHECK(objects_alive == alive);
}

TEST_CASE("The ADO stand-in is what scripts create as ADODB.Connection") {
    const HMODULE library = LoadLibraryA(VANTLO_ADO_STAND_IN);
    REQUIRE(library != nullptr);
    const auto register_server = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
        reinterpret_cast<void*>(GetProcAddress(library, "DllRegisterServer")));
    REQUIRE(register_server != nullptr);
    REQUIRE(register_server() == S_OK);

    const TemporaryFolder folder;
    const std::string file = folder.file("shop.db");
    {
        TestDatabase shop("sqlite:" + file);
        shop.connection().run(u"insert into Inventory(WID,InQty) values('W1',12.5)");
        shop.connection().run(u"insert into Inventory(WID,InQty) values('仓库',0.0001)");
        const std::vector<std::string> printed =
            run_script(VANTLO_SOURCE_DIR "/tests/com/scripts/read_back.vbs", {file, "仓库"});
        CHECK(joined(printed) == joined({"W1 12.5 Currency", "(the warehouse) 0.0001 Currency", "done"}));
    }
}

}  // namespace
}  // namespace vantlo::test
