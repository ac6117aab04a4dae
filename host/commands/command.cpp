#include "host/commands/command.h"

#include <iostream>

namespace vantlo::host {

Connect CommonOptions::connect() const {
    std::vector<std::string> named;
    for (const std::string& database : databases) {
        const bool names_a_driver = database.starts_with("sqlite:") || database.find('=') != std::string::npos;
        named.push_back(names_a_driver ? database : "sqlite:" + database);
    }
    return connect_in_turn(named);
}

Bookkeeping CommonOptions::bookkeeping() const {
    const auto show = [](TextView statement) { std::cerr << to_utf8(statement) << '\n'; };
    return Bookkeeping(connect(), show_sql ? show : ObservedConnection::Show(), language);
}

}  // namespace vantlo::host
