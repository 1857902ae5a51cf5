#include "VNProcess/PAuthKeyIdentUtil.h"

#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/PGeneralNameUtil.h"
#include "text/Ksc.h"

namespace vrno {

int PAuthKeyIdentUtil::parseAuthorityKeyIdentifer(ByteString& value, ByteString& text)
{
    RAuthorityKeyIdentifier authorityKeyIdentifier;
    if (authorityKeyIdentifier.fromASN1Object(value) > 0) return fail(*this, 1, "authorityKeyIdentifier", authorityKeyIdentifier);
    text.clear();
    const int mask = authorityKeyIdentifier.getBitMask();
    TextBuilder out;
    if (mask & 0x01) {
        ByteString& key = authorityKeyIdentifier.getKeyIdentifier();
        if (authorityKeyIdentifier.getLastError() > 0) return fail(*this, 1, "authorityKeyIdentifier", authorityKeyIdentifier);
        out << "KeyID=" << Hex{key};
    }
    if (mask & 0x02) {
        out << (out.empty() ? "" : "\r\n") << u8"인증서 발급자: \r\n"_ksc;
        if (const int code = addNames(authorityKeyIdentifier.getAuthorityCertIssuer(), out)) return code;
    }
    if (mask & 0x04) {
        ByteString& serial = authorityKeyIdentifier.getAuthorityCertSerialNumberByteString();
        if (authorityKeyIdentifier.getLastError() > 0) return fail(*this, 1, "authorityKeyIdentifier", authorityKeyIdentifier);
        out << (out.empty() ? "" : "\r\n") << "Certificate SerialNumber=" << Hex{serial};
    }
    return finish(*this, out, text);
}

int PAuthKeyIdentUtil::addNames(RGeneralNames& pGeneralNames, TextBuilder& out)
{
    const FailuresOf failed{*this, "parseAuthorityKeyIdentifer"};
    const int count = pGeneralNames.getCount();
    for (int i = 0; i < count; ++i) {
        ByteString& encoded = pGeneralNames.get(i);
        if (pGeneralNames.getLastError() > 0) return failed(2, "pGeneralNames", pGeneralNames);
        RGeneralName generalName;
        if (generalName.fromASN1Object(encoded) > 0) return failed(3, "generalName", generalName);
        const GeneralNameForm* const form = generalNameForm(generalName.getBitMask());
        if (!form || !form->value) continue;
        ByteString& value = (generalName.*form->value)();
        if (generalName.getLastError() > 0) return failed(4, "generalName", generalName);
        out << (generalName.getBitMask() == RGeneralName::otherName ? "Other Name=" : form->label);
        addPlainValue(generalName.getBitMask(), value, out);
        if (i + 1 < count) out << "\r\n";
    }
    return 0;
}

} // namespace vrno
