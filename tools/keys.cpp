// vrno key: private keys under a password. vrno cert verify-pair: whether a key belongs to a certificate.
#include "commands.h"
#include "language.h"
#include "options.h"
#include "problem.h"
#include "toolkit.h"

namespace tool {

namespace {

const Words passwordOfKey = {"password of the key", "개인키 비밀번호"};

Octets opened(const Octets& blob, const SecretSource& source)
{
    vrno::Context context = makeContext();
    const Secret password = readSecret(source, in(passwordOfKey));
    return secretCopy(valueOf(withPassword(password, [&](const std::string& octets) { return context.openKey(octets, blob); })));
}

struct Key {
    std::string file;
    Output output;
    SecretSource password;
    bool isPem = false;

    void open() const
    {
        Output out = output;
        out.isSecret = true;
        out.isText = isPem;
        checkOutput(out);
        const Octets plain = opened(derOf(readFile(file)), password);
        if (!isPem) return writeOutput(out, plain);
        std::string text = pem("PRIVATE KEY", plain);
        writeOutput(out, {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
        for (volatile char& character : text) character = 0;
    }
    void protect() const
    {
        Output out = output;
        out.isSecret = true;
        checkOutput(out);
        const Octets plain = derOf(readFile(file));
        const Secret secret = readSecret(password, in({"new password", "새 비밀번호"}), true);
        writeOutput(out, valueOf(makeContext().protectKey(std::string(secret.begin(), secret.end()), plain)));
    }
};

struct VerifyPair {
    std::string certificate, key;
    SecretSource password;

    // An EncryptedPrivateKeyInfo begins with the SEQUENCE of an algorithm, a PrivateKeyInfo with its version, an INTEGER.
    static bool isProtected(const Octets& der)
    {
        const std::size_t header = der.size() > 1 && der[1] >= 0x80 ? 2 + (der[1] & 0x7FU) : 2;
        return der.size() > header && der[header] == 0x30;
    }
    void run() const
    {
        const Octets der = derOf(readFile(certificate)), blob = derOf(readFile(key));
        const Octets plain = isProtected(blob) ? opened(blob, password) : blob;
        valueOf(makeContext().checkKeyPair(der, plain));
        print(std::string(in({"The key belongs to the certificate.", "개인키가 인증서와 짝이 맞습니다."})) + "\n");
    }
};

} // namespace

void addKeys(CLI::App& app)
{
    CLI::App* const keys = app.add_subcommand("key", in({"private keys under a password", "비밀번호로 보호하는 개인키"}));
    keys->require_subcommand(1);
    const auto add = [keys](const char* name, const Words& words) {
        const auto key = std::make_shared<Key>();
        CLI::App* const command = keys->add_subcommand(name, in(words));
        command->add_option("KEY", key->file, in({"the key, DER or PEM", "개인키(DER 또는 PEM)"}))->required();
        addOutput(*command, key->output);
        addSecret(*command, "password", key->password);
        return std::pair(command, key);
    };
    const auto [open, toOpen] = add("open", {"a protected key to a plain one (PKCS #8)", "암호화된 개인키를 평문(PKCS #8)으로 풉니다"});
    open->add_flag("--pem", toOpen->isPem, in({"as PEM", "PEM으로 출력"}));
    open->callback([key = toOpen] { key->open(); });
    const auto [protect, toProtect] = add("protect", {"a plain key under a password", "평문 개인키를 비밀번호로 암호화합니다"});
    protect->callback([key = toProtect] { key->protect(); });
}

void addCertificates(CLI::App& app)
{
    CLI::App* const certificates = app.add_subcommand("cert", in({"certificates", "인증서"}));
    certificates->require_subcommand(1);
    CLI::App* const command = certificates->add_subcommand(
        "verify-pair", in({"does the key belong to the certificate", "개인키와 인증서가 짝이 맞는지 확인합니다"}));
    const auto pair = std::make_shared<VerifyPair>();
    command->add_option("CERT", pair->certificate, in({"the certificate, DER or PEM", "인증서(DER 또는 PEM)"}))->required();
    command->add_option("KEY", pair->key, in({"the key, plain or protected", "평문이거나 암호화된 개인키"}))->required();
    addSecret(*command, "password", pair->password);
    command->callback([pair] { pair->run(); });
}

} // namespace tool
