#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ado/connection.h"
#include "automation/error.h"
#include "dataaccess/shell_hooks.h"
#include "posting/line.h"

namespace vantlo::test {

/// How closely a trace looks: statements and messages; also what happens to recordsets; also the line object's
/// properties; also every other call that can fail.
enum class Detail { statements, recordsets, reads, everything };

/// Something that the component asked of its surroundings, or showed the user.
struct Event {
    Detail detail;
    /// `execute`, `open`, `close`, `next`, `release`, `prepare`, `read`, `eof`, `field`, `message`; `free` where the last
    /// reference to a recordset ends.
    std::string what;
    std::string recordset;   ///< whose call it was: `lines`, `lookup`, `unit`, `header`, or empty
    std::string text;        ///< the statement, the property's name, the message
    std::string connection;  ///< the name of the connection that it ran on, empty for the instance's own

    /// As scenarios write it. Example: `close lookup`, `execute update Inventory set …`, `project open select …`.
    [[nodiscard]] std::string line() const;
};

/// Records events in order and can make the n-th of them fail.
class Recorder {
public:
    /// Records an event that can fail. Errors: the planned Failure, if its turn has come.
    void step(Event event);

    /// Records an event that cannot fail.
    void note(Event event) noexcept;

    /// The lines of the trace up to a level of detail.
    [[nodiscard]] std::vector<std::string> trace(Detail detail) const;

    std::vector<Event> events;
    std::function<void(std::size_t index)> on_event;  ///< what the host does while an event is under way
    int steps = 0;
    int fail_at = 0;               ///< which step fails, counted from 1; 0: none
    ErrorNumber fail_with = 1004;  ///< a number that nothing else gives
    int failed_event = -1;         ///< the index of the event that failed
};

/// A connection that records what is asked of it and passes it on to a real one.
class RecordingConnection final : public Connection {
public:
    /// `name` is what its events are marked with; `without_rows` the beginning of statements that it answers without a row.
    RecordingConnection(Recorder& recorder, Connection& inner, std::string name = {}, Text without_rows = {})
        : recorder_(recorder), inner_(inner), name_(std::move(name)), without_rows_(std::move(without_rows)) {}

    void add_reference() noexcept override { ++references; }
    void release() noexcept override;
    RecordsetVariable execute(TextView statement) override;

    int references = 0;
    std::function<void()> on_last_release;  ///< may delete the connection

    /// Becomes false with the last release: a recordset that is used or freed after it records `dangling`.
    const std::shared_ptr<bool> alive = std::make_shared<bool>(true);

    [[nodiscard]] Recorder& recorder() const { return recorder_; }
    [[nodiscard]] Connection& inner() const { return inner_; }
    [[nodiscard]] const std::string& name() const { return name_; }

private:
    Recorder& recorder_;
    Connection& inner_;
    std::string name_;
    Text without_rows_;
};

/// A line object with properties by name, in any case. Errors: no_such_member for one that it lacks.
class RecordedLine final : public Line {
public:
    RecordedLine(Recorder& recorder, std::map<std::string, Variant> properties);

    Variant value(TextView name) override;

private:
    Recorder& recorder_;
    std::map<std::string, Variant> properties_;
};

/// Gives the component hooks that record: recordsets, messages, and a project-wide state of its own.
/// One at a time; the previous hooks return with its end.
class RecordingHooks {
public:
    explicit RecordingHooks(Recorder& recorder);
    RecordingHooks(const RecordingHooks&) = delete;
    RecordingHooks& operator=(const RecordingHooks&) = delete;
    ~RecordingHooks();

private:
    ShellHooks previous_;
};

}  // namespace vantlo::test
