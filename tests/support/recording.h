#pragma once

#include <map>
#include <string>
#include <vector>

#include "ado/connection.h"
#include "automation/error.h"
#include "dataaccess/platform.h"
#include "posting/line.h"

namespace vantlo::test {

/// How closely a trace looks: statements and messages; also what happens to recordsets; also the line object's
/// properties; also every other call that can fail.
enum class Detail { statements, recordsets, reads, everything };

/// Something that the component asked of its surroundings, or showed the user.
struct Event {
    Detail detail;
    std::string
        what;  ///< `execute`, `open`, `close`, `next`, `release`, `prepare`, `read`, `eof`, `field`, `message` …
    std::string recordset;  ///< whose call it was: `lines`, `lookup`, `unit`, `header`, or empty
    std::string text;       ///< the statement, the property's name, the message

    /// As scenarios write it. Example: `close lookup`, `execute update Inventory set …`.
    [[nodiscard]] std::string line() const;
};

/// Records events in order and can make the n-th of them fail.
class Recorder {
public:
    /// Records an event that can fail. Errors: the planned Failure, if its turn has come.
    void step(Event event);

    /// Records an event that cannot fail.
    void note(Event event) { events.push_back(std::move(event)); }

    /// The lines of the trace up to a level of detail.
    [[nodiscard]] std::vector<std::string> trace(Detail detail) const;

    std::vector<Event> events;
    int steps = 0;
    int fail_at = 0;               ///< which step fails, counted from 1; 0: none
    ErrorNumber fail_with = 1004;  ///< a number that nothing else gives
    int failed_event = -1;         ///< the index of the event that failed
};

/// A connection that records what is asked of it and passes it on to a real one.
class RecordingConnection final : public Connection {
public:
    RecordingConnection(Recorder& recorder, Connection& inner) : recorder_(recorder), inner_(inner) {}

    void add_reference() noexcept override { ++references; }
    void release() noexcept override { --references; }
    RecordsetVariable execute(TextView statement) override;

    int references = 0;

    [[nodiscard]] Connection& inner() const { return inner_; }

private:
    Recorder& recorder_;
    Connection& inner_;
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

/// Puts the component on a platform that records: recordsets, messages, and a project-wide state of its own.
/// One at a time; the previous platform returns with its end.
class RecordingPlatform {
public:
    explicit RecordingPlatform(Recorder& recorder);
    RecordingPlatform(const RecordingPlatform&) = delete;
    RecordingPlatform& operator=(const RecordingPlatform&) = delete;
    ~RecordingPlatform();

private:
    Platform previous_;
};

}  // namespace vantlo::test
