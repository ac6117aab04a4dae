#include "automation/error.h"

#include <new>

namespace vantlo {

ErrorNumber number_of_current_exception() noexcept {
    try {
        throw;
    } catch (const Failure& failure) {
        // 0 would read as success.
        return failure.number() != 0 ? failure.number() : error::automation_error;
    } catch (const std::bad_alloc&) {
        return error::out_of_memory;
    } catch (...) {
        return error::automation_error;
    }
}

}  // namespace vantlo
