// How often saving a bill waits for the server: round trips on the wire, not calls of the driver.
//
//   tools/with-servers build/native-release/bench/round_trips
//
// Connections go through a relay of this program's own, which counts how often the client speaks after the server did. The
// ledger has to be empty, and what the bench stores stays in the database.

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <thread>

#include "ado/native/open_connection.h"
#include "bench/measure.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "component/inventory_class.h"
#include "support/stock_bills.h"

namespace {

using namespace vantlo;
using namespace vantlo;

/// Passes one client's connection to a local socket on to another, and counts.
class Relay {
public:
    Relay(const std::string& from, const std::string& to) : listener_(bound(from)), to_(to) {
        thread_ = std::jthread([this](const std::stop_token& stop) { relay(stop); });
    }
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;
    ~Relay() {
        thread_.request_stop();
        thread_.join();
        ::close(listener_);
    }

    [[nodiscard]] long round_trips() const { return round_trips_; }

private:
    static sockaddr_un address(const std::string& path) {
        sockaddr_un socket_address{};
        socket_address.sun_family = AF_UNIX;
        if (path.size() >= sizeof socket_address.sun_path) throw std::runtime_error(path + " is too long");
        std::memcpy(socket_address.sun_path, path.c_str(), path.size());
        return socket_address;
    }

    static int bound(const std::string& path) {
        const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
        const sockaddr_un at = address(path);
        if (::bind(listener, reinterpret_cast<const sockaddr*>(&at), sizeof at) != 0 || ::listen(listener, 8) != 0) {
            throw std::runtime_error("nothing can listen on " + path);
        }
        return listener;
    }

    void relay(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            pollfd waiting{listener_, POLLIN, 0};
            if (::poll(&waiting, 1, 50) != 1) continue;
            const int client = ::accept(listener_, nullptr, nullptr);
            const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
            const sockaddr_un to = address(to_);
            if (::connect(server, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0) pass(client, server, stop);
            ::close(client);
            ::close(server);
        }
    }

    /// Copies what either side says until one of them ends.
    void pass(int client, int server, const std::stop_token& stop) {
        bool client_spoke = false;
        while (!stop.stop_requested()) {
            pollfd both[] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
            if (::poll(both, 2, 50) <= 0) continue;
            for (pollfd& side : both) {
                if (side.revents == 0) continue;
                const bool is_client = side.fd == client;
                char bytes[1 << 16];
                const ssize_t length = ::read(side.fd, bytes, sizeof bytes);
                if (length <= 0) return;
                if (!is_client && client_spoke) ++round_trips_;
                client_spoke = is_client;
                if (::write(is_client ? server : client, bytes, static_cast<std::size_t>(length)) != length) return;
            }
        }
    }

    int listener_;
    std::string to_;
    std::atomic<long> round_trips_{0};
    std::jthread thread_;
};

/// A server of tools/with-servers, and where in its connection string its socket stands.
struct Server {
    const char* variable;
    const char* key;          ///< what the path of the socket, or of its folder, follows
    const char* socket_name;  ///< of the socket in that folder; empty if the path is the socket's own
};
constexpr Server servers[] = {
    {"VANTLO_POSTGRESQL", "Servername=", "/.s.PGSQL.5432"},
    {"VANTLO_MARIADB", "Socket=", ""},
};

Bill bill_of(int lines, const char* id) {
    Bill bill = test::stock_bill(from_utf8(id), u"G1", 2, u"W1", u"W2");
    const Record line = bill.lines.front();
    bill.lines.assign(static_cast<std::size_t>(lines), line);
    return bill;
}

void post_line(NativeConnection& database) {
    const Bill bill = bill_of(1, "");
    RecordLine line(bill.lines.front(), nullptr);
    Inventory_Class object;
    object.set_ADOConn(&database);
    const std::int32_t result = object.call(u"AddInventory_Db", {line});
    object.set_ADOConn(nullptr);
    if (result != 0) throw std::runtime_error(fmt::format("posting returned {}", result));
}

void measure(const Server& server, std::string database, const std::string& folder) {
    const std::size_t path = database.find(server.key) + std::strlen(server.key);
    const std::size_t path_end = database.find(';', path);
    const std::string target = database.substr(path, path_end - path);
    const std::string own = folder + "/" + server.variable;
    if (*server.socket_name != '\0') std::filesystem::create_directory(own);
    const Relay relay(own + server.socket_name, target + server.socket_name);
    database.replace(path, path_end - path, own);

    const auto tell = [&](const char* what, const std::function<void()>& body) {
        const long before = relay.round_trips();
        const double seconds = bench::seconds_of(bench::Clock::wall, body);
        fmt::print("  {:44}{:>5} round trips {:>9.2f} ms\n", what, relay.round_trips() - before, seconds * 1e3);
    };
    {
        const auto connection = open_connection(database);
        fmt::print("{}\n", connection->engine());
        connection->run_script(schema_for(connection->dialect().name));
        if (!connection->run(u"select * from Inventory").rows.empty()) throw std::runtime_error("the ledger has rows");
        post_line(*connection);
        tell("one line posted, its rows there", [&] { post_line(*connection); });
    }
    std::optional<Bookkeeping> bookkeeping;
    tell("connecting", [&] { bookkeeping.emplace(connect_in_turn({database})); });
    bookkeeping->save(bill_of(1, "B0"));
    for (const int lines : {1, 2, 10}) {
        const std::string id = fmt::format("B{}", lines);
        const Bill bill = bill_of(lines, id.c_str());
        tell(fmt::format("vantlo saves a stock bill of {} line{}", lines, lines == 1 ? "" : "s").c_str(),
             [&] { bookkeeping->save(bill); });
        tell("vantlo takes it back", [&] { bookkeeping->reverse(*bill.kind, bill.id); });
    }
}

}  // namespace

int main() {
    std::string folder = (std::filesystem::temp_directory_path() / "vantlo-relay.XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) return 1;
    int status = 0;
    try {
        for (const Server& server : servers) {
            if (const char* const database = std::getenv(server.variable)) measure(server, database, folder);
        }
    } catch (const std::exception& failure) {
        std::cerr << "round_trips: " << failure.what() << '\n';
        status = 1;
    }
    std::filesystem::remove_all(folder);
    return status;
}
