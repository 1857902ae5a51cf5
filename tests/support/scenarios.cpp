#include "support/scenarios.h"

#include "support/bytes.h"
#include "support/cases.h"
#include "support/certificates.h"
#include "support/pairs.h"

#include <sys/stat.h>

namespace test {

World::World() : Values(goodValues())
{
    Values& values = *this;
    const auto file = [&](const char* name, const std::string& content) { values[name] = m_files.put(name, content); };
    for (const std::size_t length : {15, 16, 17}) values["k" + std::to_string(length)] = std::string(length, 'k');
    file("emptyFile", "");
    file("blobFile", values["blob"]);
    file("keyFile", values["key"]);
    values["pipe"] = m_files.path("pipe"); // reading it must not wait for a writer
    mkfifo(values["pipe"].c_str(), 0600);
    addPairs();

    const std::string number = "A0{30{06{2A831A8C9A440A010103} 31{03{00\"value\"}}}}", longest = "\x30" + std::string(2047, 'e');
    values.merge(Values{{"withNewline", "AA\r\n"},
                        {"odd", ODD_STORAGE_LIBRARY},
                        {"longest", longest},
                        {"longText", "인증서를 읽는데 실패하였습니다. <dynamiclib> fnc=PKI_STORAGE_Read,errcode=0x1,msg=" + std::string(511, 'm')},
                        {"zero", std::string(1, '\0')},
                        {"zeroFirst", std::string("\0value", 6)},
                        {"tooLong", std::string(129, 'v')},
                        {"withNumber", der("30{" + hex(values["key"].substr(4)) + number + "}")},
                        // a key whose attribute is none cannot take the number
                        {"noAttributeKey", der("30{020100 30{06{2A03}} 0400 A0{0500}}")}});
    values["noAttribute"] = call(Context(), "VRNO_PRIKEY_Encrypt 48 password noAttributeKey out", values).output;
    for (const char* const name : {"2010.item", "2020.item"}) m_card.put(name, longest);
    m_card.put("0010.item", "certificate");
    m_card.put("0040.item", longest + "e");
    m_card.put("0001.item", "");
    m_card.put("0002.item", {"\0key", 4});
    m_card.put("0004.item", std::string(2048, '\0'));
}

void World::addPairs()
{
    Values& values = *this;
    const auto add = [&](const std::string& name, const Pair& pair) {
        values["cert" + name] = pair.certificate;
        values["key" + name] = pair.privateKey;
    };
    for (const unsigned bits : {1024U, 1536U, 2048U}) add(std::to_string(bits), rsa(bits));
    add("Kcdsa", Kcdsa().pair(oidKcdsa));
    add("Kcdsa1", Kcdsa().pair(oidKcdsa1));
    values["stranger"] = makeRsa(1024).privateKey;
    std::string& stranger = values["strangerKcdsa"] = values["keyKcdsa"];
    stranger.back() = static_cast<char>(stranger.back() ^ 1);
    values["wireless"] = "\x01";
    values["certDsa"] = certificate({.algorithm = "06{2A8648CE380401}", .key = "0500"});
}

void forEachScenario(const World& world, const Body& body)
{
    Values values = world;
    for (const std::string& certificate : {values["cert"], everyExtension}) {
        values["cert"] = certificate;
        Context context;
        for (const Step& step : session()) {
            SCOPED_TRACE(step.line);
            body(context, step, values);
            const Result result = make(step, context, values);
            if (!result.output.empty()) values["last"] = result.output;
        }
    }
    for (const char* const file : {"frame.txt", "cards.txt", "pairs.txt", "certificates.txt"}) {
        for (const Case& row : cases(file, 4)) {
            SCOPED_TRACE(row.where + " " + row[0]);
            Context context;
            makeAll(context, row[1], world);
            body(context, {row[0], {}, false}, world);
        }
    }
}

} // namespace test
