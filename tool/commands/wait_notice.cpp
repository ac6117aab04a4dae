#include "tool/commands/wait_notice.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <thread>

#include "automation/message.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message is_waiting = {"vantlo：数据库已有一秒没有答复，可能被其他程序占用；继续等待（Ctrl-C 停止）。\n",
                                "vantlo: no answer from the database for a second, another program may have it locked; waiting (Ctrl-C stops).\n"};
// clang-format on

}  // namespace words

namespace {

using Clock = std::chrono::steady_clock;

/// Looks a few times a second, in a thread of its own, how long the work of the main thread has been waiting.
class WaitNotice {
public:
    explicit WaitNotice(Language language)
        : text_((::isatty(STDERR_FILENO) == 1 ? "\r\x1B[K" : "") + std::string(words::is_waiting.in(language))),
          watcher_([this](const std::stop_token& stop) { watch(stop); }) {}

    /// Does some work, watched.
    template <typename Work>
    auto watched(const Work& work) {
        const End end{began_};
        began_ = Clock::now().time_since_epoch().count();
        return work();
    }

private:
    static constexpr std::chrono::milliseconds between_looks{200};
    static constexpr std::chrono::seconds patience{1};
    static constexpr std::chrono::seconds between_notices{30};

    struct End {
        std::atomic<Clock::rep>& began;
        ~End() { began = 0; }
    };

    void watch(const std::stop_token& stop) {
        std::mutex mutex;
        std::condition_variable_any stopped;
        std::unique_lock lock(mutex);
        Clock::time_point next_notice{};
        while (!stopped.wait_for(lock, stop, between_looks, [&] { return stop.stop_requested(); })) {
            const Clock::rep began = began_;
            const Clock::time_point now = Clock::now();
            const bool is_late = began != 0 && now.time_since_epoch() - Clock::duration(began) >= patience;
            if (!is_late || now < next_notice) continue;
            next_notice = now + between_notices;
            // Not through std::cerr, which belongs to the thread that waits.
            [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text_.data(), text_.size());
        }
    }

    std::string text_;
    std::atomic<Clock::rep> began_ = 0;  ///< when the work began; 0 while there is none
    std::jthread watcher_;
};

bool is_query(TextView statement) {
    constexpr TextView query = u"select";
    return equal_ignoring_case(statement.substr(0, query.size()), query);
}

class WatchedConnection final : public NativeConnection {
public:
    WatchedConnection(Owned<NativeConnection> inner, std::shared_ptr<WaitNotice> notice)
        : inner_(std::move(inner)), notice_(std::move(notice)) {}

    ResultTable run(TextView statement) override {
        if (is_query(statement)) return inner_->run(statement);
        return notice_->watched([&] { return inner_->run(statement); });
    }
    void run_script(const std::string& script) override {
        notice_->watched([&] { inner_->run_script(script); });
    }
    void begin() override {
        notice_->watched([&] { inner_->begin(); });
    }
    void commit() override {
        notice_->watched([&] { inner_->commit(); });
    }
    void roll_back() override { inner_->roll_back(); }
    [[nodiscard]] Remedy remedy() const override { return inner_->remedy(); }
    [[nodiscard]] const Dialect& dialect() const override { return inner_->dialect(); }
    [[nodiscard]] std::string engine() const override { return inner_->engine(); }

private:
    ~WatchedConnection() override = default;

    Owned<NativeConnection> inner_;
    std::shared_ptr<WaitNotice> notice_;
};

}  // namespace

Connect with_wait_notice(Connect connect, Language language) {
    if (std::clog.rdbuf() == nullptr) return connect;
    const auto notice = std::make_shared<WaitNotice>(language);
    return [connect = std::move(connect), notice] {
        return notice->watched([&] { return Owned<NativeConnection>(new WatchedConnection(connect(), notice)); });
    };
}

}  // namespace vantlo
