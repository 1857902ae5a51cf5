#include "VNProcess/PGeneralNameUtil.h"

#include "VNProcess/PIdentifyDataUtil.h"
#include "text/Ksc.h"

#include <iterator>

namespace vrno {

const GeneralNameForm* generalNameForm(int choice)
{
    static constexpr GeneralNameForm forms[] = {
        {"Other Name:\r\n", &RGeneralName::getEncoded},
        {"RFC822 Name=", &RGeneralName::getRFC822Name},
        {"DNS Name=", &RGeneralName::getDNSName},
        {"X400 Address=", nullptr},
        {u8"디렉토리 주소:\r\n\t"_ksc, &RGeneralName::getDNformDirectoryName},
        {"EDIParty Name=", nullptr},
        {"URL=", &RGeneralName::getUniformResourceIdentifier},
        {"IP Address=", &RGeneralName::getIPAddress},
        {"Registered ID=", &RGeneralName::getRegisteredID},
    };
    return choice >= RGeneralName::otherName && choice <= RGeneralName::registeredID ? &forms[choice - 1] : nullptr;
}

void addPlainValue(int choice, ByteString& value, TextBuilder& out)
{
    if (choice == RGeneralName::otherName) {
        out << Hex{value};
    } else {
        out << value;
    }
}

int PGeneralNameUtil::parseGeneralName(ByteString& generalName, unsigned char* choice, ByteString& label, ByteString& value)
{
    RGeneralName name;
    if (name.fromASN1Object(generalName) > 0) return fail(*this, 1, "generalName", name);
    *choice = static_cast<unsigned char>(name.getBitMask());
    const GeneralNameForm* const form = generalNameForm(*choice);
    if (!form) return fail(*this, 4, "generalName", formatted("GeneralName Choice(%d) is UNKNOWN", *choice));
    label = form->label;
    if (*choice == RGeneralName::x400Address && parseX400Address(name.getEncoded(), value) > 0)
        return fail(*this, 2, "this", *this);
    if (*choice == RGeneralName::ediPartyName && parseEDIPartyName(name.getEncoded(), value) > 0)
        return fail(*this, 3, "this", *this);
    value = (name.*form->value)();
    if (name.getLastError() > 0) return fail(*this, 5, "generalName", name);
    if (label.isOutOfMemory() || value.isOutOfMemory()) return failMemory(*this, 5, "generalName");
    return 0;
}

int PGeneralNameUtil::parseX400Address(ByteString&, ByteString&)
{
    return fail(*this, 1, "this", "This function does not supported.");
}

int PGeneralNameUtil::parseEDIPartyName(ByteString&, ByteString&)
{
    return fail(*this, 1, "this", "This function does not supported.");
}

// ---- otherName ----

// A copy under the tag of a SEQUENCE. The codec would read its option tag as an explicit tag.
static ByteString asSequence(const ByteString& encoded)
{
    ByteString copy = encoded;
    copy.setAt(0, ASN1_TAG_SEQUENCE | constructedBit);
    return copy;
}

int PGeneralNameUtil::parseOtherName(ByteString& otherName, ByteString& text)
{
    RAnotherName anotherName;
    ByteString sequence = asSequence(otherName);
    if (anotherName.fromASN1Object(sequence) > 0) return fail(*this, 1, "anotherName", anotherName);
    ASN1Object asnObj;
    ByteString wrapper = asSequence(anotherName.getValue());
    if (asnObj.fromASN1Object(wrapper) > 0) return fail(*this, 2, "asnObj", asnObj);
    const ByteString& typeId = anotherName.getTypeId(); // empty for one that cannot be read
    if (anotherName.outOfMemory()) return fail(*this, 5, "anotherName", anotherName);
    TextBuilder out;
    if (const int code = addOtherName(typeId, asnObj.getValue(), out)) return code;
    return finish(*this, out, text);
}

int PGeneralNameUtil::addOtherName(const ByteString& typeId, ByteString& value, TextBuilder& out)
{
    static constexpr OidName attributes[] = {
        {"2 5 4 3", "cn"}, {"2 5 4 5", u8"일련번호"_ksc}, {"2 5 4 6", "c"}, {"2 5 4 10", "o"}, {"2 5 4 11", "ou"},
    };
    if (typeId == "1 2 410 200004 10 1 1") return addIdentifyData(value, out);
    out << "     " << nameOrOid(typeId, attributes) << "=" << Hex{value, m_nHexGroup, m_nHexLine};
    return 0;
}

int PGeneralNameUtil::addIdentifyData(ByteString& value, TextBuilder& out)
{
    const FailuresOf failed{*this, "parseOtherName"};
    PIdentifyDataUtil identifyData;
    ByteString realName, vid;
    if (const int code = identifyData.parseIdentifyData(value, realName, vid)) {
        if (identifyData.outOfMemory()) return failed(code, "identifyData", identifyData);
        out << "     identifyData=" << Hex{value, m_nHexGroup, m_nHexLine};
        return 0;
    }
    out << "     identifyData:\r\n" << u8"          실명="_ksc << realName;
    return vid.getLength() > 0 ? addVID(vid, out) : 0;
}

int PGeneralNameUtil::addVID(ByteString& encoded, TextBuilder& out)
{
    static constexpr OidName hashAlgorithms[] = {
        {"1 3 14 3 2 26", "SHA1"},
        {"1 2 840 113549 2 5", "MD5"},
        {"1 2 410 200004 1 2", "HAS160"},
    };
    const FailuresOf failed{*this, "parseOtherName"};
    RVID vid;
    if (vid.fromASN1Object(encoded) > 0) return failed(3, "vid", vid);
    RAlgorithmIdentifier& hashAlg = vid.getHashAlg();
    const ByteString& oid = hashAlg.getAlgorithm();
    if (hashAlg.getLastError() > 0) return failed(4, "vid", hashAlg);
    ByteString& virtualID = vid.getVirtualID();
    if (vid.getLastError() > 0) return failed(4, "vid", vid);
    out << "\r\n          VID:\r\n";
    out << u8"             해쉬 알고리즘="_ksc << nameOrOid(oid, hashAlgorithms) << "\r\n";
    out << "             virtualID=" << Hex{virtualID, m_nHexGroup, m_nHexLine};
    return 0;
}

} // namespace vrno
