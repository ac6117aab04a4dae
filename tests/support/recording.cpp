#include "tests/support/recording.h"

#include <algorithm>

#include "ado/native/native_connection.h"
#include "automation/error.h"
#include "tests/support/allocation_failures.h"

namespace vantlo::test {

namespace {

Recorder* current_recorder = nullptr;
ProjectState recorded_state;

/// What a statement's rows are to the members, told by the table that it reads.
std::string role_of(TextView statement) {
    struct Role {
        TextView piece;
        const char* name;
    };
    static constexpr Role roles[] = {
        {u"from Inventory", "lookup"},  {u"from GoodsUnit", "unit"},    {u"Items", "lines"},
        {u"from StockBill ", "header"}, {u"from GoodsBill ", "header"},
    };
    for (const Role& role : roles) {
        if (statement.find(role.piece) != TextView::npos) return role.name;
    }
    return "written";
}

class RecordingRecordset final : public Recordset {
public:
    RecordingRecordset(Recorder& recorder, RecordsetVariable inner, std::string role)
        : recorder_(recorder), inner_(std::move(inner)), role_(std::move(role)) {}

    /// A result of a connection, which it does not keep alive.
    RecordingRecordset(Recorder& recorder, RecordsetVariable inner, std::string role,
                       const RecordingConnection& connection)
        : RecordingRecordset(recorder, std::move(inner), std::move(role)) {
        connection_ = connection.name();
        connection_lives_ = connection.alive;
    }
    RecordingRecordset(const RecordingRecordset&) = delete;
    RecordingRecordset& operator=(const RecordingRecordset&) = delete;
    ~RecordingRecordset() override {
        const HarnessAllocations harness;
        note_dangling();
        recorder_.note({Detail::everything, "free", role_, {}, {}});
    }

    void set_active_connection(Connection* connection) override {
        step(Detail::everything, "connect");
        if (auto* recording = dynamic_cast<RecordingConnection*>(connection)) {
            connection_ = recording->name();
            active_connection_ = ConnectionReference(recording);
            connection = &recording->inner();
        }
        inner_->set_active_connection(connection);
    }
    void set_cursor_location(std::int32_t location) override {
        step(Detail::everything, "location", std::to_string(location));
        inner_->set_cursor_location(location);
    }
    void set_cursor_type(std::int32_t type) override {
        step(Detail::everything, "type", std::to_string(type));
        inner_->set_cursor_type(type);
    }
    void open(TextView source) override {
        role_ = role_of(source);
        step(Detail::statements, "open", to_utf8(source));
        inner_->open(source);
    }
    bool eof() override {
        step(Detail::everything, "eof");
        return inner_->eof();
    }
    void move_next() override {
        step(Detail::recordsets, "next");
        inner_->move_next();
    }
    Variant field(TextView name) override {
        step(Detail::everything, "field", to_utf8(name));
        return inner_->field(name);
    }
    std::int32_t state() override {  // nothing but the release routine asks for it
        step(Detail::recordsets, "release");
        return inner_->state();
    }
    void close() override {
        step(Detail::recordsets, "close");
        inner_->close();
    }

private:
    void step(Detail detail, const char* what, std::string text = {}) {
        note_dangling();
        recorder_.step({detail, what, role_, std::move(text), connection_});
    }
    void note_dangling() const {
        if (connection_lives_ && !*connection_lives_) recorder_.note({Detail::statements, "dangling", role_, {}, {}});
    }

    Recorder& recorder_;
    RecordsetVariable inner_;
    std::string role_;
    std::string connection_;
    ConnectionReference active_connection_;
    std::shared_ptr<const bool> connection_lives_;
};

RecordsetVariable create_recorded() {
    current_recorder->step({Detail::recordsets, "prepare", {}, {}, {}});
    return std::make_unique<RecordingRecordset>(*current_recorder, make_client_recordset(), "unopened");
}

void show_recorded(const char16_t* text, const char16_t* title, std::int32_t style) noexcept {
    const HarnessAllocations harness;
    std::string shown = to_utf8(text);
    if (TextView(title) != u"提示信息" || style != 64)
        shown += " (title " + to_utf8(title) + ", style " + std::to_string(style) + ")";
    current_recorder->note({Detail::statements, "message", {}, shown, {}});
}

ProjectState& state_of_test() noexcept { return recorded_state; }

std::string lower(std::string_view name) {
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(), [](char c) { return 'A' <= c && c <= 'Z' ? char(c + 32) : c; });
    return folded;
}

}  // namespace

AllocationPlan& allocation_plan() {
    thread_local AllocationPlan plan;
    return plan;
}

std::string Event::line() const {
    const std::string call = connection.empty() ? what : connection + " " + what;
    if (detail == Detail::statements || recordset.empty()) return text.empty() ? call : call + " " + text;
    return call + " " + recordset;
}

void Recorder::step(Event event) {
    const HarnessAllocations harness;
    const std::size_t index = events.size();
    note(std::move(event));
    if (++steps != fail_at) return;
    failed_event = static_cast<int>(index);
    throw Failure(fail_with, "planned");
}

void Recorder::note(Event event) noexcept {
    events.push_back(std::move(event));
    if (on_event) on_event(events.size() - 1);
}

std::vector<std::string> Recorder::trace(Detail detail) const {
    std::vector<std::string> lines;
    for (const Event& event : events) {
        if (event.detail <= detail) lines.push_back(event.line());
    }
    return lines;
}

RecordsetVariable RecordingConnection::execute(TextView statement) {
    recorder_.step({Detail::statements, "execute", role_of(statement), to_utf8(statement), name_});
    const bool has_rows = without_rows_.empty() || !statement.starts_with(without_rows_);
    RecordsetVariable result =
        inner_.execute(has_rows ? Text(statement) : u"select * from (" + Text(statement) + u") emptied where 1=0");
    return std::make_unique<RecordingRecordset>(recorder_, std::move(result), role_of(statement), *this);
}

void RecordingConnection::release() noexcept {
    if (--references > 0) return;
    *alive = false;
    if (on_last_release) std::exchange(on_last_release, nullptr)();
}

RecordedLine::RecordedLine(Recorder& recorder, std::map<std::string, Variant> properties) : recorder_(recorder) {
    for (auto& [name, value] : properties) properties_.emplace(lower(name), std::move(value));
}

Variant RecordedLine::value(TextView name) {
    recorder_.step({Detail::reads, "read", {}, to_utf8(name), {}});
    const auto found = properties_.find(lower(to_utf8(name)));
    if (found == properties_.end()) throw Failure(error::no_such_member);
    return found->second;
}

RecordingHooks::RecordingHooks(Recorder& recorder) : previous_(shell_hooks()) {
    current_recorder = &recorder;
    set_shell_hooks({create_recorded, show_recorded, state_of_test});
}

RecordingHooks::~RecordingHooks() {
    set_project_connection(nullptr);
    project_state().database_kind = DatabaseKind::other;
    set_shell_hooks(previous_);
    current_recorder = nullptr;
}

}  // namespace vantlo::test
