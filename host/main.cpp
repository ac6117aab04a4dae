// vantlo: the native reference host. It stores bills and posts them through the component.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>

#include "automation/error.h"
#include "host/bookkeeping.h"
#include "host/ledger_view.h"
#include "host/schema.h"

namespace {

using namespace vantlo;
using namespace vantlo::host;

/// What the process returns; scripts rely on the numbers.
enum ExitCode { done = 0, posting_failed = 1, usage = 2, no_database = 4, bad_input = 5 };

struct Options {
    std::vector<std::string> databases = {"vantlo.db"};
    bool show_sql = false;
    Language language = Language::chinese;
    std::vector<std::string> files;
    std::string kind;
    std::string id;
    std::string warehouse;
    std::string goods;
};

/// A bare file name stands for an SQLite file.
std::string connection_text(const std::string& database) {
    const bool names_a_driver = database.starts_with("sqlite:") || database.find('=') != std::string::npos;
    return names_a_driver ? database : "sqlite:" + database;
}

ObservedConnection::Show shown(const Options& options) {
    if (!options.show_sql) return {};
    return [](TextView statement) { std::cerr << to_utf8(statement) << '\n'; };
}

int init(NativeConnection& database) {
    database.run_script(schema_for(database.dialect()));
    std::cerr << fmt::format("The tables are there ({}).\n", database.engine());
    return done;
}

int save(const Connect& connect, const Options& options) {
    std::vector<ShopFile> files;
    for (const std::string& path : options.files) files.push_back(read_shop_file(path));
    Bookkeeping bookkeeping(connect, shown(options), options.language);
    std::size_t bills = 0, lines = 0;
    for (const ShopFile& file : files) {
        if (!file.master.empty()) bookkeeping.save_master(file.master);
        for (const Bill& bill : file.bills) {
            bookkeeping.save(bill);
            ++bills;
            lines += bill.lines.size();
        }
    }
    std::cerr << fmt::format("Saved {} bills with {} lines.\n", bills, lines);
    return done;
}

int remove(const Connect& connect, const Options& options) {
    const BillKind* const kind = find_bill_kind(options.kind);
    if (kind == nullptr) {
        std::string names;
        for (const BillKind& known : bill_kinds()) names += fmt::format("  {:20} {}\n", known.name, known.chinese_name);
        std::cerr << fmt::format("vantlo: there is no kind of bill \"{}\"; the kinds are\n{}", options.kind, names);
        return usage;
    }
    Bookkeeping(connect, shown(options), options.language).remove(*kind, from_utf8(options.id));
    std::cerr << fmt::format("Took {} {} back.\n", kind->name, options.id);
    return done;
}

int show_ledger(NativeConnection& database, const Options& options) {
    std::cout << ledger_table(read_ledger(database, {from_utf8(options.warehouse), from_utf8(options.goods)}));
    return done;
}

int run(const CLI::App& app, const Options& options) {
    std::vector<std::string> databases;
    for (const std::string& database : options.databases) databases.push_back(connection_text(database));
    const Connect connect = connect_in_turn(databases);
    collect_messages();
    if (app.got_subcommand("init")) return init(*connect());
    if (app.got_subcommand("save")) return save(connect, options);
    if (app.got_subcommand("delete")) return remove(connect, options);
    return show_ledger(*connect(), options);
}

}  // namespace

int main(int count, char** arguments) {
    Options options;
    CLI::App app("Keeps a shop's stock ledger in step with its bills.", "vantlo");
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option(
           "--db", options.databases,
           "Database: an SQLite file, sqlite:FILE, or an ODBC connection string; once for each node of a cluster")
        ->allow_extra_args(false)
        ->default_str("vantlo.db");
    app.add_flag("--show-sql", options.show_sql, "Show every statement on stderr as it is sent");
    app.add_option("--lang", options.language, "Language of error texts: zh or en")
        ->transform(
            CLI::Transformer(std::map<std::string, Language>{{"zh", Language::chinese}, {"en", Language::english}}))
        ->default_str("zh");
    app.add_subcommand("init", "Make the tables that are missing");
    app.add_subcommand("save", "Store bills and post them")
        ->add_option("FILE", options.files, "JSON files of master data and bills")
        ->required();
    CLI::App* const remove_command = app.add_subcommand("delete", "Take a stored bill back and delete it");
    remove_command->add_option("KIND", options.kind, "Kind of bill")->required();
    remove_command->add_option("ID", options.id, "The bill's identifier")->required();
    CLI::App* const ledger_command = app.add_subcommand("ledger", "Show the stock ledger");
    ledger_command->add_option("--warehouse", options.warehouse, "Only this warehouse");
    ledger_command->add_option("--goods", options.goods, "Only these goods");
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& failure) {
        return app.exit(failure) == 0 ? done : usage;
    }
    try {
        return run(app, options);
    } catch (const BadInput& failure) {
        std::cerr << "vantlo: " << failure.what() << '\n';
        return bad_input;
    } catch (const PostingFailed& failure) {
        std::cerr << "vantlo: " << failure.what() << '\n';
        return posting_failed;
    } catch (const Failure& failure) {
        std::cerr << "vantlo: " << failure.what() << '\n';
        return no_database;
    }
}
