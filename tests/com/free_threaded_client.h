#pragma once

namespace vantlo::test {

/// What a client in the multithreaded apartment does with the class, which lives in an apartment of its own: it makes it
/// early and late bound, sets and reads a property, and posts a line of its own, whose getters are called back.
///
/// On every Windows ADO's type library is registered, which the class's interface refers to; it is for the length of this.
void check_free_threaded_client();

}  // namespace vantlo::test
