// vrno cipher: the session cipher, SEED in CBC mode.
#include "commands.h"
#include "language.h"
#include "options.h"
#include "problem.h"
#include "toolkit.h"

#include <sstream>

namespace tool {

namespace {

std::string hexOf(const vrno::Octets& octets)
{
    std::string text;
    for (const unsigned char octet : octets) {
        text += "0123456789abcdef"[octet >> 4];
        text += "0123456789abcdef"[octet & 15];
    }
    return text;
}

vrno::Octets octetsOf(const std::string& hex)
{
    const auto digit = [](char c) { return c >= '0' && c <= '9' ? c - '0' : (c | 32) >= 'a' && (c | 32) <= 'f' ? (c | 32) - 'a' + 10 : -1; };
    vrno::Octets octets;
    for (std::size_t at = 0; at < hex.size(); at += 2) {
        const int high = digit(hex[at]), low = at + 1 < hex.size() ? digit(hex[at + 1]) : -1;
        if (high < 0 || low < 0) fail(in({"The key or the IV is not hexadecimal.", "키나 초기 벡터가 16진수가 아닙니다."}));
        octets.push_back(static_cast<unsigned char>(high << 4 | low));
    }
    return octets;
}

void newKey()
{
    vrno::Context context = makeContext();
    valueOf(context.generateKey());
    const vrno::SessionKey session = valueOf(context.key());
    print("key=" + hexOf(session.key) + "\niv=" + hexOf(session.iv) + "\n");
}

struct Cipher {
    std::string key, iv, keyFile, input;
    Output output;

    // What `cipher new` printed.
    void readKeyFile()
    {
        const Octets content = readFile(keyFile);
        std::istringstream lines(std::string(content.begin(), content.end()));
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            if (line.starts_with("key=")) key = line.substr(4);
            if (line.starts_with("iv=")) iv = line.substr(3);
        }
    }
    void run(bool encrypts)
    {
        checkOutput(output);
        if (!keyFile.empty()) readKeyFile();
        if (key.empty() || iv.empty())
            throw Problem{usage, in({"Both a key and an IV are needed: --key-file, or --key and --iv.",
                                     "키와 초기 벡터가 모두 필요합니다. --key-file이나 --key와 --iv를 쓰십시오."})};
        vrno::Context context = makeContext();
        valueOf(context.setKey(octetsOf(key), octetsOf(iv)));
        const Octets message = readFile(input);
        writeOutput(output, valueOf(encrypts ? context.encrypt(message) : context.decrypt(message)));
    }
};

} // namespace

void addCipher(CLI::App& app)
{
    CLI::App* const commands = app.add_subcommand("cipher", in({"the session cipher (SEED-CBC)", "세션 암호(SEED-CBC)"}));
    commands->require_subcommand(1);
    commands->add_subcommand("new", in({"print a new key and IV", "새 키와 초기 벡터를 출력합니다"}))->callback(newKey);
    for (const bool encrypts : {true, false}) {
        const auto cipher = std::make_shared<Cipher>();
        CLI::App* const command = encrypts ? commands->add_subcommand("encrypt", in({"encrypt a file", "파일을 암호화합니다"}))
                                           : commands->add_subcommand("decrypt", in({"decrypt a file", "파일을 복호화합니다"}));
        command->add_option("--key", cipher->key, in({"the key in hexadecimal, to try the cipher out: others on this machine can see it; use --key-file",
                                                      "16진수 키. 시험용이며 같은 시스템의 다른 사용자에게 보입니다. --key-file을 쓰십시오"}))
            ->type_name("HEX");
        command->add_option("--iv", cipher->iv, in({"the initial vector in hexadecimal", "16진수 초기 벡터"}))->type_name("HEX");
        command->add_option("--key-file", cipher->keyFile, in({"a file with what `vrno cipher new` printed", "`vrno cipher new`의 출력이 담긴 파일"}))
            ->type_name("FILE")
            ->excludes("--key")
            ->excludes("--iv");
        addOutput(*command, cipher->output);
        addInput(*command, cipher->input);
        command->callback([cipher, encrypts] { cipher->run(encrypts); });
    }
}

} // namespace tool
