#include "VNProcess/PlainExtensions.h"

#include "ASN1Pkix/records/RExtensions.h"

namespace vrno {

int keyUsageText(ByteString& value, ByteString& text, Trail& trail)
{
    static constexpr BitName usages[] = {
        {0x8000, "digitalSignature, "}, {0x4000, "nonRepudiation, "}, {0x2000, "keyEncipherment, "},
        {0x1000, "dataEncipherment, "}, {0x0800, "keyAgreement, "},   {0x0400, "keyCertSign, "},
        {0x0200, "crlSign, "},          {0x0100, "encipherOnly, "},   {0x0080, "decipherOnly, "},
    };
    ASN1BitString keyUsage;
    if (const int code = keyUsage.fromASN1Object(value)) return handOver(keyUsage, code, trail);
    int unusedBits = 0;
    const ByteString& bits = keyUsage.getBitString(&unusedBits);
    if (keyUsage.getLastError() > 0) return handOver(keyUsage, keyUsage.getLastError(), trail);
    unsigned char high = 0, low = 0; // 0 if there is no such octet; `low` also if there are more than two
    bits.getAt(0, &high);
    if (bits.getLength() == 2) bits.getAt(1, &low);
    TextBuilder out;
    addBits(high, low, usages, out);
    return finish(out, text, trail);
}

int basicConstraintsText(ByteString& value, ByteString& text, Trail& trail)
{
    RBasicConstraints constraints;
    if (const int code = constraints.fromASN1Object(value)) return handOver(constraints, code, trail);
    constexpr int none = -1;
    const int pathLength = (constraints.getBitMask() & 0x02) ? constraints.getPathLenConstraint() : none;
    TextBuilder out;
    out << "CA : " << (constraints.isCA() ? "TRUE" : "FALSE");
    if (pathLength != none) out << ", PathLenConstraint : " << pathLength;
    return finish(out, text, trail);
}

int keyIdentifierText(ByteString& value, ByteString& text, Trail& trail)
{
    ASN1OctetString keyIdentifier;
    if (const int code = keyIdentifier.fromASN1Object(value)) return handOver(keyIdentifier, code, trail);
    return finish(TextBuilder() << Hex{keyIdentifier.getValue()}, text, trail);
}

} // namespace vrno
