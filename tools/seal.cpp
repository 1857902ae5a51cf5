// vrno seal: an enveloped message for the holder of a certificate.
#include "commands.h"
#include "language.h"
#include "options.h"
#include "toolkit.h"

namespace tool {

namespace {

struct Seal {
    std::string certificate, input;
    Output output;
    bool isBare = false, isPem = false;

    void run() const
    {
        Output out = output;
        out.isText = isPem;
        checkOutput(out);
        const Octets der = derOf(readFile(certificate)), content = readFile(input);
        const vrno::Octets message =
            valueOf(makeContext().encryptFor(der, content, isBare ? 0u : static_cast<unsigned>(VRNO_CMS_CONTENT_INFO)));
        if (!isPem) return writeOutput(out, message);
        const std::string text = pem("CMS", message);
        writeOutput(out, {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    }
};

} // namespace

void addSealing(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand(
        "seal", in({"encrypt a file to the holder of a certificate (CMS EnvelopedData)", "인증서 소유자에게 보낼 전자봉투(CMS EnvelopedData)를 만듭니다"}));
    const auto seal = std::make_shared<Seal>();
    command->add_option("--to", seal->certificate, in({"the certificate, DER or PEM", "인증서(DER 또는 PEM)"}))->required()->type_name("CERT");
    command->add_flag("--bare", seal->isBare, in({"the EnvelopedData alone, without a ContentInfo", "ContentInfo 없이 EnvelopedData만"}));
    command->add_flag("--pem", seal->isPem, in({"as PEM", "PEM으로 출력"}));
    addOutput(*command, seal->output);
    addInput(*command, seal->input);
    command->callback([seal] { seal->run(); });
}

} // namespace tool
