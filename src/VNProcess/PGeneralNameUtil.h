// One GeneralName (RFC 5280, 4.2.1.6) as a label and a value.
#pragma once

#include "ASN1Pkix/records/RNames.h"
#include "VNProcess/Rendering.h"

namespace vrno {

// How a form of name is shown; x400Address and ediPartyName have no value.
struct GeneralNameForm {
    const char* label;
    ByteString& (RGeneralName::*value)();
};

// Null for what is no RGeneralName::Choice.
const GeneralNameForm* generalNameForm(int choice);

// Adds the value of a name where an otherName is shown in hexadecimal and any other form as it is.
void addPlainValue(int choice, ByteString& value, TextBuilder& out);

class PGeneralNameUtil : public PObject {
public:
    static constexpr const char* className = "PGeneralNameUtil";

    // Binary values print as ByteString::toHex, or with a group as toHexGrouped.
    explicit PGeneralNameUtil(int hexGroup = 0, int hexLine = 0) : m_nHexGroup(hexGroup), m_nHexLine(hexLine) {}

    // An iPAddress gives its raw octets, an otherName its encoding, for parseOtherName. `choice` is an
    // RGeneralName::Choice. 0, or: 1 it does not decode, 2 it is an x400Address, 3 an ediPartyName, 4 none of the nine
    // forms, 5 its value cannot be read.
    int parseGeneralName(ByteString& generalName, unsigned char* choice, ByteString& label, ByteString& value);

    // Lines that begin with five blanks. 0, or: 1 it does not decode, 2 its value does not, 3 the VID in an identify data
    // does not, 4 the VID's algorithm cannot be read, 5 the type cannot. What is not the identify data that its type says
    // prints in hexadecimal.
    int parseOtherName(ByteString& otherName, ByteString& text);

    // These forms are not rendered: always 1.
    int parseX400Address(ByteString& x400Address, ByteString& text);
    int parseEDIPartyName(ByteString& ediPartyName, ByteString& text);

private:
    int addOtherName(const ByteString& typeId, ByteString& value, TextBuilder& out);
    int addIdentifyData(ByteString& value, TextBuilder& out);
    int addVID(ByteString& encoded, TextBuilder& out);

    int m_nHexGroup;
    int m_nHexLine;
};

} // namespace vrno
