#include "platform/ZYMNullHandleError.h"

#include <string>

ZYMNullHandleError::ZYMNullHandleError(const char* interfaceName)
    : std::logic_error(std::string("a null handle of ") + interfaceName + " was dereferenced") {}

ZYMNullHandleError::~ZYMNullHandleError() = default;

void ZYMRaiseNullHandle(const char* interfaceName) { throw ZYMNullHandleError(interfaceName); }
