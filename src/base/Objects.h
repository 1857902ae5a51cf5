// The base classes of the crypto facade and of the utility classes. Values and records have their own.
#pragma once

#include "base/Trail.h"

namespace vrno {

// Base of the crypto facade classes.
class VNObject : public Trailed {};

// Base of the utility classes (prefix P). An operation with a byte string as its result leaves it in `m_bsOutput` and returns a
// reference to it, which is valid until the next such operation on the object.
class PObject : public Trailed {
public:
    ByteString m_bsOutput;
};

} // namespace vrno
