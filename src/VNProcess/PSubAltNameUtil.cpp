#include "VNProcess/PSubAltNameUtil.h"

#include "VNProcess/PGeneralNameUtil.h"

namespace vrno {

int PSubAltNameUtil::parseSubjectAlternativeName(ByteString& value, ByteString& text)
{
    RGeneralNames generalNames;
    if (generalNames.fromASN1Object(value) > 0) return fail(*this, 1, "generalNames", generalNames);
    text.clear();
    PGeneralNameUtil generalNameUtil(m_nHexGroup, m_nHexLine);
    TextBuilder out;
    for (int i = 0; i < generalNames.getCount(); ++i) {
        ByteString& encoded = generalNames.get(i);
        if (generalNames.getLastError() > 0) return fail(*this, 2, "generalNames", generalNames);
        unsigned char choice = 0;
        ByteString label, shown;
        if (generalNameUtil.parseGeneralName(encoded, &choice, label, shown) > 0)
            return fail(*this, 3, "generalNameUtil", generalNameUtil);
        if (choice == RGeneralName::otherName && generalNameUtil.parseOtherName(encoded, shown) > 0)
            return fail(*this, 4, "generalNameUtil", generalNameUtil);
        out << (i > 0 ? "\r\n" : "") << label << shown;
    }
    return finish(*this, out, text);
}

} // namespace vrno
