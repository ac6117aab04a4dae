#include "tests/com/free_threaded_client.h"
#include "tests/com/registered.h"

namespace vantlo::test {
namespace {

TEST_CASE("A client in the multithreaded apartment gets the registered class, early and late bound") {
    const Registered component(VANTLO_COMPONENT);
    check_free_threaded_client();
}

}  // namespace
}  // namespace vantlo::test
