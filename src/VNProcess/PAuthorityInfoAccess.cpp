#include "VNProcess/PAuthorityInfoAccess.h"

#include "ASN1Pkix/records/RExtensions.h"
#include "VNProcess/PGeneralNameUtil.h"
#include "text/Ksc.h"

namespace vrno {

static void addMethod(const ByteString& method, TextBuilder& out)
{
    static constexpr OidName methods[] = {
        {"1 3 6 1 5 5 7 48 2", u8"인증 기관 발급자(1.3.6.1.5.5.7.48.2)"_ksc},
        {"1 3 6 1 5 5 7 48 1", u8"온라인 인증서 상태 프로토콜(1.3.6.1.5.5.7.48.1)"_ksc},
    };
    if (const char* const name = nameOf(method, methods)) {
        out << name;
    } else {
        out << "Unknown(" << method << ")";
    }
}

int PAuthorityInfoAccess::parseAuthorityInfoAccess(ByteString& value, ByteString& text)
{
    RAuthorityInfoAccessSyntax aiaSyntax(value);
    if (aiaSyntax.getLastError() > 0) return fail(*this, 1, "aiaSyntax", aiaSyntax);
    text.clear();
    TextBuilder out;
    if (aiaSyntax.getCount() == 0) out << "AuthorityInfoAccess :empty";
    for (int i = 0; i < aiaSyntax.getCount(); ++i) {
        out << (i > 0 ? "\r\n[" : "[") << i + 1 << "]AuthorityInfoAccess :";
        RAccessDescription accessDesc;
        if (accessDesc.fromASN1Object(aiaSyntax.get(i)) > 0) return fail(*this, 2, "accessDesc", accessDesc);
        const ByteString& method = accessDesc.getsetAccessMethod();
        if (accessDesc.getLastError() > 0) return fail(*this, 3, "accessDesc", accessDesc);
        out << "\r\n\tAccess Method = ";
        addMethod(method, out);
        PGeneralNameUtil generalNameUtil;
        unsigned char choice = 0;
        ByteString label, location;
        if (generalNameUtil.parseGeneralName(accessDesc.getAccessLocation().toASN1Object(), &choice, label, location) > 0)
            return fail(*this, 4, "generalNameUtil", generalNameUtil);
        out << "\r\n\tAlternative Name:\r\n\t\tURL=";
        addPlainValue(choice, location, out);
    }
    return finish(*this, out, text);
}

} // namespace vrno
