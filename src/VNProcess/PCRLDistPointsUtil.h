// The CRL distribution points (RFC 5280, 4.2.1.13) as text, and the places to fetch a CRL from.
#pragma once

#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/Rendering.h"

namespace vrno {

class PCRLDistPointsUtil : public PObject {
public:
    static constexpr const char* className = "PCRLDistPointsUtil";

    // A numbered block a distribution point, CRLF between them. 0, or: 1 the value is no list, 2 a point cannot be had, 3
    // it does not render.
    int parseCRLDistributionPoint(ByteString& value, ByteString& text);

    // The first three names of all full names, of whatever form, with the values that PGeneralNameUtil gives them. An
    // index without one gives an empty text.
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

// The places to fetch a CRL from, with "|" between them, as a Renderer.
int crlUrlText(ByteString& value, ByteString& text, Trail& trail);

} // namespace vrno
