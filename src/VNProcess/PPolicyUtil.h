// The certificate policies (RFC 5280, 4.2.1.4) as text, and the list of their identifiers.
#pragma once

#include "ASN1Pkix/records/RPolicies.h"
#include "VNProcess/Rendering.h"

#include <memory>

namespace vrno {

class PPolicyUtil : public PObject {
public:
    static constexpr const char* className = "PPolicyUtil";

    PPolicyUtil();

    // Replaces text and list. 0, or 1: the value is not a list; 2: a policy cannot be read; 3: it cannot be rendered. On failure
    // both have no meaning.
    int parseCertificatePolicies(ByteString& value);

    // The text. Each line ends with CRLF.
    ByteString& getMessage();
    int getPolicyCount() const;
    // The arcs with `separator` between them. `m_nLastError` 1: index out of range; 2: no identifier.
    ByteString& getPolicyOid(int index, char separator);

private:
    // What is collected from the policies. Identifiers are joined here, since a container that takes them one by one copies the
    // earlier ones each time.
    struct Message {
        TextBuilder text;
        ByteBuilder identifiers;
        int policies = 0;
    };
    int makePolicyInformationMessage(ByteString& encoded, Message& message);
    int keepIdentifier(ByteString& oid, Message& message);
    int makePolicyQualifierInfoMessage(ByteString& encoded, int number, Message& message);
    int addCPS(ByteString& qualifier, TextBuilder& out);
    int addUserNotice(ByteString& qualifier, TextBuilder& out);
    int addNoticeReference(RNoticeReference& reference, TextBuilder& out);
    int displayText(RDisplayText& text, int firstCode, ByteString& ksc);
    int keepResults(const Message& message);

    std::unique_ptr<ASN1Sequence> m_pPolicyOids; // null after an allocation failure
    ByteString m_bsMessage;
    ByteString m_bsCPS, m_bsNoticeText, m_bsOrganization; // the last ones shown
};

// The text, and the identifiers alone as "1 2 410 200004 5 2 1 2, 2 5 29 32 0", each as a Renderer.
int policyText(ByteString& value, ByteString& text, Trail& trail);
int policyIdentifierText(ByteString& value, ByteString& text, Trail& trail);

} // namespace vrno
