// The CRL distribution points (RFC 5280, 4.2.1.13) as text, and the locations of the CRLs.
#pragma once

#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/Rendering.h"

namespace vrno {

class PCRLDistPointsUtil : public PObject {
public:
    static constexpr const char* className = "PCRLDistPointsUtil";

    // One numbered block for each distribution point, with CRLF between them. 0, or 1: the value is not a list; 2: a point cannot
    // be read; 3: it cannot be rendered.
    int parseCRLDistributionPoint(ByteString& value, ByteString& text);

    // The first three names of all full names, in any form, as PGeneralNameUtil gives them; empty for an index out of range.
    int getUrlCount() const { return m_nUrlCount; }
    ByteString& getUrl(int index);

private:
    static constexpr int maxUrls = 3;

    struct Indent;
    int makeDistributionPointMessage(int number, ByteString& encoded, ByteString& text);
    int addPointName(RDistributionPointName& name, TextBuilder& out);
    int addReasons(RDistributionPoint& point, TextBuilder& out);
    int addIssuer(RGeneralNames& names, TextBuilder& out);
    int addName(ByteString& encoded, const Indent& indent, bool isFirst, TextBuilder& out, int& choice, ByteString& value);

    int m_nUrlCount = 0;
    ByteString m_bsUrls[maxUrls + 1];
    ByteString m_bsCRLIssuer; // the encoded directoryName of the last CRL issuer
};

// The locations of the CRLs, with "|" between them, as a Renderer.
int crlUrlText(ByteString& value, ByteString& text, Trail& trail);

} // namespace vrno
