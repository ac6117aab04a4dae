#include "tests/support/tds_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <list>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

// The layout of the packets is the one of the published protocol description MS-TDS.

namespace vantlo::test {

namespace {

enum Packet : std::uint8_t { batch = 0x01, answer = 0x04, transaction = 0x0E, login = 0x10, pre_login = 0x12 };
enum Token : std::uint8_t {
    columns = 0x81,
    error_token = 0xAA,
    login_acknowledged = 0xAD,
    row = 0xD1,
    changed = 0xE3,
    done = 0xFD,
};
enum TransactionRequest : std::uint16_t { begins = 5, commits = 7, rolls_back = 8 };
enum TransactionChange : std::uint8_t { begun = 8, committed = 9, rolled_back = 10 };

constexpr std::size_t head_size = 8;

/// Bytes in the order of the protocol: little-endian but for the packets' own heads.
class Bytes {
public:
    Bytes& byte(std::uint64_t value) {
        text_ += static_cast<char>(static_cast<unsigned char>(value));
        return *this;
    }
    Bytes& two(std::uint64_t value) { return byte(value & 0xFF).byte(value >> 8 & 0xFF); }
    Bytes& four(std::uint32_t value) { return two(value & 0xFFFF).two(value >> 16); }
    Bytes& eight(std::uint64_t value) {
        return four(static_cast<std::uint32_t>(value)).four(static_cast<std::uint32_t>(value >> 32));
    }
    Bytes& units(TextView value) {
        for (const char16_t unit : value) two(unit);
        return *this;
    }
    Bytes& short_text(TextView value) { return byte(static_cast<unsigned>(value.size())).units(value); }
    Bytes& long_text(TextView value) { return two(static_cast<unsigned>(value.size())).units(value); }
    Bytes& raw(const Bytes& other) {
        text_ += other.text_;
        return *this;
    }
    /// The bytes behind their number.
    static Bytes counted(Token token, const Bytes& inner) {
        return Bytes().byte(token).two(static_cast<unsigned>(inner.text_.size())).raw(inner);
    }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

Bytes done_token(bool failed, bool counts) {
    constexpr unsigned error_bit = 0x02, count_bit = 0x10;
    return Bytes().byte(done).two((failed ? error_bit : 0) | (counts ? count_bit : 0)).two(0).eight(counts ? 1 : 0);
}

Bytes error_bytes(const TdsError& error) {
    Bytes inner;
    inner.four(static_cast<std::uint32_t>(error.number)).byte(1).byte(error.severity).long_text(error.message);
    inner.short_text(u"server").short_text(u"").four(1);
    return Bytes::counted(error_token, inner).raw(done_token(true, false));
}

Bytes transaction_change(TransactionChange change) {
    constexpr std::uint64_t descriptor = 1;
    Bytes inner;
    inner.byte(change);
    if (change == begun)
        inner.byte(8).eight(descriptor).byte(0);
    else
        inner.byte(0).byte(8).eight(descriptor);
    return Bytes::counted(changed, inner);
}

/// One row of one column, `a`.
Bytes result_bytes(const TdsField& field) {
    constexpr unsigned nullable = 1, integer_type = 0x26, text_type = 0xE7, time_type = 0x29, time_scale = 7;
    Bytes bytes;
    bytes.byte(columns).two(1).four(0).two(nullable);
    switch (field.type) {
        case TdsField::Type::integer: bytes.byte(integer_type).byte(4); break;
        case TdsField::Type::text: bytes.byte(text_type).two(8000).four(0x00D00409).byte(52); break;
        case TdsField::Type::time: bytes.byte(time_type).byte(time_scale); break;
    }
    bytes.short_text(u"a").byte(row);
    const std::uint64_t number = field.type == TdsField::Type::text ? 0 : std::stoull(to_utf8(field.value));
    switch (field.type) {
        case TdsField::Type::integer: bytes.byte(4).four(static_cast<std::uint32_t>(number)); break;
        case TdsField::Type::text: bytes.two(static_cast<unsigned>(field.value.size() * 2)).units(field.value); break;
        case TdsField::Type::time:
            bytes.byte(5).four(static_cast<std::uint32_t>(number)).byte(number >> 32 & 0xFF);
            break;
    }
    return bytes.raw(done_token(false, true));
}

Bytes login_answer() {
    constexpr unsigned version_7_4 = 0x74;
    Bytes inner;
    inner.byte(1).byte(version_7_4).byte(0).byte(0).byte(4);
    inner.short_text(u"Microsoft SQL Server").byte(15).byte(0).byte(0).byte(0);
    return Bytes::counted(login_acknowledged, inner).raw(done_token(false, false));
}

/// Only the version, and that nothing is encrypted.
Bytes pre_login_answer() {
    constexpr unsigned version = 0, encryption = 1, not_supported = 2, end = 0xFF;
    Bytes bytes;
    bytes.byte(version).byte(0).byte(11).byte(0).byte(6);
    bytes.byte(encryption).byte(0).byte(17).byte(0).byte(1).byte(end);
    return bytes.byte(15).byte(0).byte(0).byte(0).byte(0).byte(0).byte(not_supported);
}

std::size_t number_at(std::string_view bytes, std::size_t at, std::size_t size) {
    std::size_t number = 0;
    for (std::size_t i = size; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return number;
}

Text units_of(std::string_view bytes) {
    Text text;
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) text += static_cast<char16_t>(number_at(bytes, at, 2));
    return text;
}

/// Each byte of a password has its halves exchanged and is then combined with 0xA5.
Text password_of(std::string_view login_request) {
    constexpr std::size_t offset_at = 44;
    constexpr unsigned key = 0xA5;
    const std::size_t offset = number_at(login_request, offset_at, 2);
    std::string bytes(login_request.substr(offset, number_at(login_request, offset_at + 2, 2) * 2));
    for (char& character : bytes) {
        const unsigned mixed = static_cast<unsigned char>(character) ^ key;
        character = static_cast<char>(mixed << 4 | mixed >> 4);
    }
    return units_of(bytes);
}

}  // namespace

class TdsServer::State {
public:
    explicit State(Script script) : script_(std::move(script)), listener_(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (listener_ < 0 || ::bind(listener_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
            ::listen(listener_, 8) != 0 ||
            ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
            throw std::runtime_error("no port for the server");
        }
        port_ = ntohs(address.sin_port);
        acceptor_ = std::jthread([this] { accept_connections(); });
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        ::shutdown(listener_, SHUT_RDWR);
        acceptor_.join();
        ::close(listener_);
    }

    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] Text password() const {
        const std::lock_guard lock(mutex_);
        return password_;
    }
    [[nodiscard]] std::vector<Text> received() const {
        const std::lock_guard lock(mutex_);
        return received_;
    }

private:
    void accept_connections() {
        std::list<std::jthread> connections;
        for (int socket = 0; (socket = ::accept(listener_, nullptr, nullptr)) >= 0;) {
            connections.emplace_back([this, socket] {
                serve(socket);
                ::close(socket);
            });
        }
    }

    void serve(int socket) {
        Packet packet{};
        bool in_transaction = false;
        for (std::string request; receive(socket, packet, request); request.clear()) {
            const std::optional<Bytes> reply = reply_to(packet, request, in_transaction);
            if (!reply || !send(socket, *reply)) return;
        }
    }

    /// Reads a request, which may be several packets. Returns false at the end of the connection.
    static bool receive(int socket, Packet& packet, std::string& request) {
        constexpr unsigned is_last = 1;
        for (std::array<unsigned char, head_size> head{};;) {
            if (::recv(socket, head.data(), head_size, MSG_WAITALL) != static_cast<ssize_t>(head_size)) return false;
            packet = static_cast<Packet>(head[0]);
            std::string part((std::size_t{head[2]} << 8 | head[3]) - head_size, '\0');
            if (::recv(socket, part.data(), part.size(), MSG_WAITALL) != static_cast<ssize_t>(part.size()))
                return false;
            request += part;
            if ((head[1] & is_last) != 0) return true;
        }
    }

    static bool send(int socket, const Bytes& reply) {
        const std::size_t size = head_size + reply.text().size();
        Bytes packet;
        packet.byte(answer).byte(1).byte(size >> 8 & 0xFF).byte(size & 0xFF).four(0x00010000).raw(reply);
        return ::send(socket, packet.text().data(), size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    }

    /// Nothing if the server hangs up.
    std::optional<Bytes> reply_to(Packet packet, std::string_view request, bool& in_transaction) {
        switch (packet) {
            case pre_login: return pre_login_answer();
            case login: {
                const std::lock_guard lock(mutex_);
                password_ = password_of(request);
                return script_.login ? error_bytes(*script_.login) : login_answer();
            }
            case transaction: return transaction_reply(request.substr(number_at(request, 0, 4)), in_transaction);
            case batch: {
                const Text statement = units_of(request.substr(number_at(request, 0, 4)));
                note(statement);
                const TdsAnswer what = script_.statement(statement);
                const TdsError* const error = std::get_if<TdsError>(&what);
                if (error != nullptr && error->number == tds_deadlock) in_transaction = false;
                return bytes_of(what);
            }
            default: return std::nullopt;
        }
    }

    /// The driver asks for the next transaction together with the end of one.
    std::optional<Bytes> transaction_reply(std::string_view request, bool& in_transaction) {
        const std::size_t wanted = number_at(request, 0, 2);
        note(wanted == begins ? u"begin" : wanted == commits ? u"commit" : u"rollback");
        if (wanted == rolls_back && script_.hangs_up_at_rollback) return std::nullopt;
        const bool was_in_transaction = std::exchange(in_transaction, true);
        if (wanted == begins) return transaction_change(begun).raw(done_token(false, false));
        if (!was_in_transaction) {
            in_transaction = false;
            return error_bytes(
                {wanted == commits ? 3902 : 3903, u"The request has no corresponding BEGIN TRANSACTION."});
        }
        const TransactionChange change = wanted == commits ? committed : rolled_back;
        return transaction_change(change).raw(transaction_change(begun)).raw(done_token(false, false));
    }

    static std::optional<Bytes> bytes_of(const TdsAnswer& what) {
        if (std::holds_alternative<HangUp>(what)) return std::nullopt;
        if (const TdsError* error = std::get_if<TdsError>(&what)) return error_bytes(*error);
        if (const TdsField* field = std::get_if<TdsField>(&what)) return result_bytes(*field);
        return done_token(false, false);
    }

    void note(TextView what) {
        const std::lock_guard lock(mutex_);
        received_.emplace_back(what);
    }

    Script script_;
    int listener_;
    int port_ = 0;
    mutable std::mutex mutex_;
    Text password_;
    std::vector<Text> received_;
    std::jthread acceptor_;
};

TdsServer::TdsServer(Script script) : state_(std::make_unique<State>(std::move(script))) {}
TdsServer::~TdsServer() = default;

std::string TdsServer::connection_string() const {
    return "Driver=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(state_->port()) +
           ";TDS_Version=7.4;ClientCharset=UTF-8;UID=shop";
}

Text TdsServer::password() const { return state_->password(); }

std::vector<Text> TdsServer::received() const { return state_->received(); }

}  // namespace vantlo::test
