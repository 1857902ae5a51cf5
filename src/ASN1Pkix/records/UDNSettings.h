// A distinguished name as the text that callers see.
#pragma once

#include "ASN1Pkix/records/RNames.h"

namespace vrno {

class UDNSettings {
public:
    // "cn=c,ou=b,o=a,c=KR" in code page 949: the most specific part first, "+" between the attributes of one part, no
    // blanks and no escaping. 0, or why the rendering stopped, with `text` holding what came before; on allocation failure
    // it is empty with the status 2:
    //  1  a part does not decode                 10  UniversalString
    //  2  an attribute does not decode           12  UTF8String: decoding, 13 to UCS-2, 14 to code page 949
    //  3  its type cannot be read                15  BMPString: decoding, 16 value, 17 odd length, 18 to code page 949
    //  4  its type has no short name here        19  IA5String: decoding, 20 value
    //  5  its value does not decode              21  any other value
    //  6  T61String: decoding, 7 value
    //  8  PrintableString: decoding, 9 value
    static int RDN2Str(RRDNSequence& name, ByteString& text);
};

} // namespace vrno
