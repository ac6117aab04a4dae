#pragma once

#include "dataaccess/shell_hooks.h"

namespace vantlo::thread_state {

// Each thread's project-wide copy in a thread slot of its own. A `thread_local` with a destructor would keep the library
// loaded until every thread that used it has ended.

/// Makes and gives back the slot and the copies' memory, once for the process. Returns: whether there is a slot.
bool open() noexcept;
void close() noexcept;

/// The calling thread's copy, made at its first use.
ProjectState& current() noexcept;

/// Makes the calling thread's copy, so that `current` finds it. Returns: whether there was memory for it.
bool prepare() noexcept;

/// Has the calling thread's copy let go when the thread's apartment is uninitialised, as long as it refers to a
/// connection; to be called after each change of it. The library stays loaded meanwhile.
void watch_apartment() noexcept;

/// Lets go of what the calling thread's copy refers to.
void reset() noexcept;

/// Whether no thread's apartment is watched. What kept the library loaded for those that ended is then given back: only
/// for a caller that keeps it loaded itself.
bool nothing_watched() noexcept;

/// Frees the calling thread's copy as memory alone. A reference in it is left behind: a thread that ends inside the
/// loader's lock must not call into a host's object.
void discard() noexcept;

}  // namespace vantlo::thread_state
