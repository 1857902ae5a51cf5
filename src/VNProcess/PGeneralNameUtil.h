// One GeneralName (RFC 5280, 4.2.1.6) as a label and a value.
#pragma once

#include "ASN1Pkix/records/RNames.h"
#include "VNProcess/Rendering.h"

namespace vrno {

// How a form of name is shown. `value` is null for x400Address and ediPartyName.
struct GeneralNameForm {
    const char* label;
    ByteString& (RGeneralName::*value)();
};

// Null if `choice` is not one of the nine forms.
const GeneralNameForm* generalNameForm(int choice);

// Adds the value of a name: an otherName in hexadecimal, any other form unchanged.
void addPlainValue(int choice, ByteString& value, TextBuilder& out);

class PGeneralNameUtil : public PObject {
public:
    static constexpr const char* className = "PGeneralNameUtil";

    // Binary values are shown as by ByteString::toHex, or by toHexGrouped if `hexGroup` is not 0.
    explicit PGeneralNameUtil(int hexGroup = 0, int hexLine = 0) : m_nHexGroup(hexGroup), m_nHexLine(hexLine) {}

    // The value of an iPAddress is its octets, that of an otherName its encoding, for parseOtherName(). `choice` gets an
    // RGeneralName::Choice. 0, or 1: it does not decode; 2: an x400Address; 3: an ediPartyName; 4: none of the nine forms; 5: its
    // value cannot be read.
    int parseGeneralName(ByteString& generalName, unsigned char* choice, ByteString& label, ByteString& value);

    // Lines that begin with five blanks. 0, or 1: it does not decode; 2: its value does not decode; 3: the VID in the identify
    // data does not decode; 4: a part of the VID cannot be read; 5: allocation failure. A type that cannot be read is shown as an empty
    // text. A value that is not the identify data that its type promises is shown in hexadecimal.
    int parseOtherName(ByteString& otherName, ByteString& text);

    // These forms are not supported: always 1.
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
