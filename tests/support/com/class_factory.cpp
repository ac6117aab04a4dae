#include "tests/support/com/class_factory.h"

#include <stdexcept>

namespace vantlo::test {

ClassRegistration::ClassRegistration(REFCLSID identifier, ClassFactory::Make make) {
    const ComPointer<IUnknown> factory(new ClassFactory(std::move(make)));
    if (FAILED(CoRegisterClassObject(identifier, factory.get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_))) {
        throw std::runtime_error("the class cannot be registered in this process");
    }
}

}  // namespace vantlo::test
