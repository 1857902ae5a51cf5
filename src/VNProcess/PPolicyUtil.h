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

    // Replaces text and list. 0, or with both empty: 1 the value is no list, 2 a policy cannot be had, 3 it does not render.
    int parseCertificatePolicies(ByteString& value);

    // The text, every line of it with its CRLF.
    ByteString& getMessage();
    int getPolicyCount() const;
    // The arcs with `separator` between them. `m_nLastError` 1: no such index, 2: no identifier.
    ByteString& getPolicyOid(int index, char separator);

private:
    // What grows while the policies are gone through. The identifiers are joined here, since a container that takes them
    // one by one copies all that it has each time.
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

    std::unique_ptr<ASN1Sequence> m_pPolicyOids; // null when there was no memory for it
    ByteString m_bsMessage;
    ByteString m_bsCPS, m_bsNoticeText, m_bsOrganization; // the last ones, in code page 949
};

// The text, and the identifiers alone as "1 2 410 200004 5 2 1 2, 2 5 29 32 0", each as a Renderer.
int policyText(ByteString& value, ByteString& text, Trail& trail);
int policyIdentifierText(ByteString& value, ByteString& text, Trail& trail);

} // namespace vrno
