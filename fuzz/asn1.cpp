// Values of ASN.1, and texts.
#include "targets.h"

#include "ASN1/ASN1BitString.h"
#include "ASN1/ASN1Boolean.h"
#include "ASN1/ASN1Integer.h"
#include "ASN1/ASN1Null.h"
#include "ASN1/ASN1ObjectIdentifier.h"
#include "ASN1/ASN1OctetString.h"
#include "ASN1/ASN1Sequence.h"
#include "ASN1/ASN1Strings.h"
#include "ASN1/ASN1Times.h"
#include "base/Base64.h"
#include "text/UUTF8String.h"
#include "text/UUnicode.h"

using namespace vrno;

namespace fuzz {

// One element of any tag: its encoding decodes to the same contents and encodes as before. Not so where the kind of
// the value is not known: in an implicit tag, and in an explicit one around nothing or around another tag.
void codec(Octets input)
{
    ByteString data = copy(input);
    ASN1Object first, second;
    if (first.fromASN1Object(data) > 0 || first.getPrimitiveTag() == ASN1_TAG_ANY) return;
    ByteString encoded = first.toASN1Object();
    EXPECT_EQ(second.fromASN1Object(encoded), 0);
    EXPECT_EQ(bytes(second.getValue()), bytes(first.getValue()));
    EXPECT_EQ(bytes(second.toASN1Object()), bytes(encoded));
}

template <bool check> struct Time : ASN1GeneralizedTime {
    using ASN1GeneralizedTime::fromASN1Object;
    int fromASN1Object(ByteString& data) override { return ASN1GeneralizedTime::fromASN1Object(data, check); }
};
void values(Octets input)
{
    roundTripOfOne<ASN1Boolean, ASN1Integer, ASN1BitString, ASN1ObjectIdentifier, ASN1UTF8String, ASN1OctetString, ASN1Null,
                   ASN1PrintableString, ASN1IA5String, ASN1VisibleString, ASN1T61String, ASN1BMPString, ASN1UTCTime, Time<false>,
                   Time<true>>(input);
}

// The components of a SEQUENCE or SET: one built of them has the same value, and who keeps but three counts as many.
template <class List> static void walk(Octets input)
{
    List list, built, few;
    ByteString data = copy(input);
    few.keepOnly(3);
    const int code = list.fromASN1Object(data);
    EXPECT_EQ(few.fromASN1Object(data), code);
    if (code > 0) return;
    for (int i = 0; i < list.getComponentCount(); ++i) {
        EXPECT_EQ(built.addComponent(list.getComponent(i), list.getComponentTagNo(i)), 0);
        if (i < 3) {
            EXPECT_EQ(bytes(few.getComponent(i)), bytes(list.getComponent(i)));
        }
    }
    EXPECT_EQ(few.getComponentCount(), list.getComponentCount());
    EXPECT_EQ(bytes(built.getValue()), bytes(list.getValue()));
}
void sequence(Octets input)
{
    walk<ASN1Sequence>(input);
    walk<ASN1Set>(input);
}

// The input as contents octets, and as a text. A text is given back if its first two arcs fit into an octet of their own.
void identifier(Octets input)
{
    ASN1ObjectIdentifier fromOctets, fromText, again;
    fromOctets.setValue(input.data(), static_cast<int>(input.size()));
    const int length = fromOctets.getOID(' ').getLength();
    EXPECT_EQ(length > 0, fromOctets.m_nLastError == 0);
    if (fromText.setOID(input.data(), static_cast<int>(input.size())) > 0) return;
    ByteString arcs = fromText.getOID(' ');
    if (fromText.m_nLastError > 0 || fromText.getValue().getBytes()[0] >= 0x80) return;
    EXPECT_EQ(again.setOID(arcs), 0);
    EXPECT_EQ(bytes(again.getOID(' ')), bytes(arcs));
}

// What decodes is the encoding of its result, but for bits of the last character that belong to no byte.
void base64(Octets input)
{
    ByteString encoded, back, decoded, again;
    EXPECT_EQ(base64Encode(input, encoded), 0);
    EXPECT_EQ(base64Decode(encoded.octets(), back), 0);
    EXPECT_EQ(bytes(back), string(input));
    if (base64Decode(input, decoded) > 0) return;
    EXPECT_EQ(base64Encode(decoded.octets(), again), 0);
    EXPECT_EQ(again.octets().size(), input.size());
    const std::size_t exact = input.size() - std::min<std::size_t>(input.size(), 4);
    EXPECT_EQ(bytes(again).substr(0, exact), string(input).substr(0, exact));
}

// To code page 949, directly and by way of UCS-2. No text becomes longer.
void text(Octets input)
{
    ByteString utf8 = copy(input), ksc, viaUcs2, direct;
    EXPECT_EQ(UUnicode::Unicode2KSC(utf8, ksc), 0);
    EXPECT_LE(ksc.octets().size(), input.size());
    EXPECT_EQ(UUTF8String::UTF8ToUnicode(utf8, viaUcs2), 0);
    EXPECT_EQ(UUnicode::Unicode2KSC(viaUcs2, viaUcs2), 0);
    EXPECT_EQ(UUTF8String::UTF8ToKSC(utf8, direct), 0);
    EXPECT_EQ(bytes(direct), bytes(viaUcs2));
    EXPECT_LE(direct.octets().size(), input.size());
    EXPECT_EQ(bytes(utf8), string(input));
}

} // namespace fuzz
