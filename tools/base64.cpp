// vrno base64: RFC 4648.
#include "commands.h"
#include "language.h"
#include "options.h"
#include "toolkit.h"

namespace tool {

namespace {

struct Base64 {
    std::string input;
    Output output;

    void encode()
    {
        output.isText = true;
        checkOutput(output);
        const std::string text = valueOf(makeContext().encodeBase64(readFile(input))) + "\n";
        writeOutput(output, {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    }
    void decode()
    {
        checkOutput(output);
        Octets text = readFile(input);
        std::erase_if(text, [](unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
        writeOutput(output, valueOf(makeContext().decodeBase64({reinterpret_cast<const char*>(text.data()), text.size()})));
    }
};

} // namespace

void addBase64(CLI::App& app)
{
    CLI::App* const commands = app.add_subcommand("base64", "Base64 (RFC 4648)");
    commands->require_subcommand(1);
    for (const bool encodes : {true, false}) {
        const auto work = std::make_shared<Base64>();
        CLI::App* const command =
            encodes ? commands->add_subcommand("encode", in({"a file to a text of one line", "파일을 한 줄의 문자열로 바꿉니다"}))
                    : commands->add_subcommand("decode", in({"a text to octets; white space is skipped", "문자열을 바이트로 바꿉니다. 공백은 건너뜁니다"}));
        addOutput(*command, work->output);
        addInput(*command, work->input);
        command->callback([work, encodes] { encodes ? work->encode() : work->decode(); });
    }
}

} // namespace tool
