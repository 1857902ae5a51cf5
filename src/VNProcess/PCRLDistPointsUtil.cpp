#include "VNProcess/PCRLDistPointsUtil.h"

#include "VNProcess/PGeneralNameUtil.h"

namespace vrno {

static constexpr const char* pointMethod = "makeDistributionPointMessage"; // also for the frames of its helpers

int PCRLDistPointsUtil::parseCRLDistributionPoint(ByteString& value, ByteString& text)
{
    m_nUrlCount = 0;
    RCRLDistPointsSyntax crlDistributionPointsSyntax(value);
    if (crlDistributionPointsSyntax.getLastError() > 0)
        return fail(*this, 1, "crlDistributionPointsSyntax", crlDistributionPointsSyntax);
    text.clear();
    TextBuilder out;
    for (int i = 0; i < crlDistributionPointsSyntax.getCount(); ++i) {
        ByteString& encoded = crlDistributionPointsSyntax.get(i);
        if (crlDistributionPointsSyntax.getLastError() > 0)
            return fail(*this, 2, "crlDistributionPointsSyntax", crlDistributionPointsSyntax);
        ByteString point;
        if (makeDistributionPointMessage(i + 1, encoded, point) > 0) return fail(*this, 3, "tihs", *this);
        out << (i > 0 ? "\r\n" : "") << point;
    }
    return finish(*this, out, text);
}

int PCRLDistPointsUtil::makeDistributionPointMessage(int number, ByteString& encoded, ByteString& text)
{
    RDistributionPoint distributionPoint(encoded);
    if (distributionPoint.getLastError() > 0) return fail(*this, 1, "distributionPoint", distributionPoint);
    const int mask = distributionPoint.getBitMask();
    TextBuilder out;
    out << "[" << number << "] CRL Distribution Point\r\n";
    int code = 0;
    if (mask & 0x01) code = addPointName(distributionPoint.getDistributionPoint(), out);
    if (code == 0 && (mask & 0x02)) code = addReasons(distributionPoint, out);
    if (code == 0 && (mask & 0x04)) code = addIssuer(distributionPoint.getCRLIssuer(), out);
    return code > 0 ? code : finish(*this, out, text);
}

// The blanks before the first name's label, and those before the value of a directoryName.
struct PCRLDistPointsUtil::Indent {
    const char* label;
    const char* directoryName;
};

int PCRLDistPointsUtil::addName(ByteString& encoded, const Indent& indent, bool isFirst, TextBuilder& out, int& choice,
                                ByteString& value)
{
    PGeneralNameUtil generalNameUtil;
    unsigned char form = 0;
    ByteString label;
    if (generalNameUtil.parseGeneralName(encoded, &form, label, value) > 0)
        return fail(*this, 3, "generalNameUtil", generalNameUtil, Here::now().in(pointMethod));
    choice = form;
    if (isFirst) out << indent.label << label;
    if (choice == RGeneralName::directoryName) out << indent.directoryName;
    addPlainValue(choice, value, out);
    return 0;
}

int PCRLDistPointsUtil::addPointName(RDistributionPointName& name, TextBuilder& out)
{
    static constexpr Indent indent{"\t          ", "               "};
    out << "     Distribution Point Name:\r\n";
    if (name.getBitMask() != 0x01) {
        out << "\t     Issuer RDN \r\n";
        return 0;
    }
    out << "\t     Full Name: \r\n";
    RGeneralNames& pGeneralNames = name.getFullName();
    for (int i = 0; i < pGeneralNames.getCount(); ++i) {
        ByteString& encoded = pGeneralNames.get(i);
        if (pGeneralNames.getLastError() > 0) return fail(*this, 2, "pGeneralNames", pGeneralNames, Here::now().in(pointMethod));
        int choice = 0;
        ByteString value;
        if (i > 0) out << "\r\n";
        if (const int code = addName(encoded, indent, i == 0, out, choice, value)) return code;
        if (m_nUrlCount < maxUrls) m_bsUrls[m_nUrlCount++].swap(value);
    }
    return 0;
}

int PCRLDistPointsUtil::addReasons(RDistributionPoint& point, TextBuilder& out)
{
    static constexpr BitName reasons[] = {
        {0x8000, " unused,"},          {0x4000, " keyCompromise,"},
        {0x2000, " cACompromise,"},    {0x1000, " affiliationChanged,"},
        {0x0800, " superseded,"},      {0x0400, " cessationOfOperation,"},
        {0x0200, " certificateHold,"}, {0x0100, " privilegeWithdrawn,"},
        {0x0080, " aACompromise,"},
    };
    ByteString bits;
    int unusedBits = 0;
    if (point.getReasons(bits, &unusedBits) > 0) return fail(*this, 4, "distributionPoint", point, Here::now().in(pointMethod));
    unsigned char high = 0, low = 0; // 0 if there is no such octet
    bits.getAt(0, &high);
    bits.getAt(1, &low);
    out << "\r\n     CRL Reason=";
    addBits(high, low, reasons, out);
    out.replaceLast(' '); // the last comma, or the "=" if no reason is given
    return 0;
}

int PCRLDistPointsUtil::addIssuer(RGeneralNames& names, TextBuilder& out)
{
    static constexpr Indent indent{"\t     ", "          "};
    out << "\r\n     CRL Issuer:\r\n";
    for (int i = 0; i < names.getCount(); ++i) {
        ByteString& encoded = names.get(i);
        int choice = 0;
        ByteString value;
        if (i > 0) out << "\r\n";
        if (const int code = addName(encoded, indent, i == 0, out, choice, value)) return code;
        if (choice != RGeneralName::directoryName) continue;
        RGeneralName generalName;
        if (generalName.fromASN1Object(encoded) > 0)
            return fail(*this, 4, "generalNameUtil", generalName, Here::now().in(pointMethod));
        m_bsCRLIssuer = generalName.getEncoded();
        if (m_bsCRLIssuer.isOutOfMemory())
            return failMemory(*this, 4, "generalNameUtil", memoryFailure, Here::now().in(pointMethod));
    }
    if (m_bsCRLIssuer.getLength() == 0) return fail(*this, 5, "m_bsCRLIssuer", "The ", Here::now().in(pointMethod));
    return 0;
}

ByteString& PCRLDistPointsUtil::getUrl(int index)
{
    m_bsOutput.clear();
    return index >= 0 && index < m_nUrlCount ? m_bsUrls[index] : m_bsOutput;
}

int crlUrlText(ByteString& value, ByteString& text, Trail& trail)
{
    PCRLDistPointsUtil points;
    ByteString whole;
    if (const int code = points.parseCRLDistributionPoint(value, whole)) return handOver(points, code, trail);
    TextBuilder out;
    for (int i = 0; i < points.getUrlCount(); ++i) out << (i > 0 ? "|" : "") << points.getUrl(i);
    return finish(out, text, trail);
}

} // namespace vrno
