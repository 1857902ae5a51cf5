// A distinguished name (RFC 5280, 4.1.2.4) as text.
#pragma once

#include "ASN1Pkix/records/RNames.h"

namespace vrno {

class UDNSettings {
public:
    // "cn=c,ou=b,o=a,c=KR" in code page 949: the most specific part first, "+" between the attributes of one part, no blanks and
    // no escaping. 0, or the reason why the rendering stopped, with `text` holding what was rendered before:
    //   1  a part does not decode                  8  a PrintableString does not decode
    //   2  an attribute does not decode           10  UniversalString, which is not supported
    //   3  its type cannot be read                12  a UTF8String does not decode
    //   4  its type has no short name here        14  allocation failure, with `text` empty and its status 2
    //   5  its value does not decode              15  a BMPString does not decode; 17: its length is odd
    //   6  a T61String does not decode            19  an IA5String does not decode; 21: any other value
    static int RDN2Str(RRDNSequence& name, ByteString& text);
};

} // namespace vrno
