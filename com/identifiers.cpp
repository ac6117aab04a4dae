// The identifiers that com/idl gives, defined here once for the whole library.
#include <initguid.h>
#include <vantlo.h>
