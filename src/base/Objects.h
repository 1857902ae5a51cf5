// The base classes of the crypto facade and of the utility classes. Records and values have their own.
#pragma once

#include "base/Trail.h"

namespace vrno {

// Base of the crypto facade classes.
class VNObject {
public:
    VNObject() = default;
    VNObject(const VNObject&) = delete;
    VNObject& operator=(const VNObject&) = delete;
    virtual ~VNObject() = default;

    int getLastError() const { return m_nLastError; }
    ByteString& getErrorTrail() { return m_bsErrorTrail; }
    void addTrailFrame(const char* pszFile, int nLine, const char* pszClass, const char* pszMethod, const char* pszName, int nCode,
                       const char* pszMessage)
    {
        vrno::addTrailFrame(m_bsErrorTrail, pszFile, nLine, pszClass, pszMethod, pszName, nCode, pszMessage);
    }

    int m_nLastError = 0;
    ByteString m_bsErrorTrail;
};

// Base of the utility classes (prefix P). An operation that gives back a byte string leaves it in `m_bsOutput` and
// returns a reference to it, good until the next such operation on the object.
class PObject {
public:
    PObject() = default;
    PObject(const PObject&) = delete;
    PObject& operator=(const PObject&) = delete;
    virtual ~PObject() = default;

    int getLastError() const { return m_nLastError; }
    ByteString& getErrorTrail() { return m_bsErrorTrail; }
    void addTrailFrame(const char* pszFile, int nLine, const char* pszClass, const char* pszMethod, const char* pszName, int nCode,
                       const char* pszMessage)
    {
        vrno::addTrailFrame(m_bsErrorTrail, pszFile, nLine, pszClass, pszMethod, pszName, nCode, pszMessage);
    }

    int m_nLastError = 0;
    ByteString m_bsOutput;
    ByteString m_bsErrorTrail;
};

} // namespace vrno
