// The PKCS #11 module that VRNO_P11_MODULE names.
#pragma once

#include "Answer.h"

namespace storage {

// Gives the functions of the module, which is loaded and initialised. That is done once, by the first call and by one after the
// variable has changed. A failure is not kept. The caller holds a ModuleLock.
int useModule(Answer& answer, const CK_FUNCTION_LIST*& module);

// Held for a whole read: all sessions of a process are logged in or out together.
class ModuleLock {
public:
    ModuleLock();
    ~ModuleLock();
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

} // namespace storage
