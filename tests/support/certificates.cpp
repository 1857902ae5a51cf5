#include "support/certificates.h"

#include "support/bytes.h"

namespace test {

std::string certificate(const CertificateParts& parts)
{
    const std::string utc = "17{\"0401011200Z\"}", subject = parts.name + "30{30{" + parts.algorithm + "} 03{00" + parts.key + "}}";
    return der("30{30{" + parts.version + "02{" + parts.serial + "} 30{" + parts.signature + "}" + parts.name + "30{" + utc + utc +
               "}" + subject + parts.extensions + "} 30{06{2A03}} 0303004142}");
}

std::string certificateWith(const std::string& extensionOid, const std::string& value)
{
    return certificate({.extensions = "A3{30{30{06{" + extensionOid + "} 04{" + value + "}}}}"});
}

static std::string extension(const std::string& oid, const std::string& value) { return "30{06{" + oid + "} 04{" + value + "}}"; }

static std::string allExtensions()
{
    const std::string dn = "A4{30{31{30{06{550403} 0C{EAB080}}}}}", url = "86{\"u\"}";
    const std::string vid = "30{06{2A831A8C9A440A010101} 30{30{06{2A831A8C9A440102}} A0{0401AA}}}";
    const std::string person = "A0{06{2A831A8C9A440A0101} A0{30{0C{EAB080} 30{" + vid + "}}}}",
                      foreign = "A0{06{2A831A8C9A440A0101} A0{0500}}";
    const std::string notice = "30{30{0C{EAB080} 30{020101 020102}} 1E{AC00}}";
    const std::string policies =
        "30{30{06{2A03} 30{30{06{2B06010505070201} 16{\"c\"}} 30{06{2B06010505070202}" + notice + "}}} 30{06{551D2000}}}";
    const std::string point = "30{A0{A0{" + url + dn + person + "}} 81{0640} A2{" + dn + "}}";
    return extension("551D0F", "030206C0") + extension("551D13", "30{0101FF 020103}") + extension("551D0E", "0402AABB") +
           extension("551D20", policies) + extension("551D25", "30{06{2B06010505070301} 06{2A03}}") +
           extension("551D11", "30{81{\"e\"} 82{\"d\"}" + dn + url + "87{\"ABCD\"} 88{2A03}" + person + foreign + "}") +
           extension("551D23", "30{8002AABB A1{" + dn + person + "} 820105}") + extension("551D1F", "30{" + point + point + "}") +
           extension("2B06010505070101", "30{30{06{2B06010505073001}" + url + "} 30{06{2A03}" + person + "}}");
}

const std::string everyExtension = certificate({.extensions = "A3{30{" + allExtensions() + "}}"});

} // namespace test
