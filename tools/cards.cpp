// vrno card: what a smart card holds, through a storage library.
#include "commands.h"
#include "language.h"
#include "options.h"
#include "toolkit.h"

namespace tool {

namespace {

struct Card {
    std::string library, what;
    int type = 1;
    Output output;
    SecretSource pin;

    void run()
    {
        output.isSecret = what == "key";
        checkOutput(output);
        vrno::Context context = makeContext();
        valueOf(context.loadStorage(library));
        const Secret secret = readSecret(pin, "PIN");
        const std::string octets(secret.begin(), secret.end());
        writeOutput(output, secretCopy(valueOf(what == "key" ? context.readCardPrivateKey(type, octets) : context.readCardCertificate(type, octets))));
    }
};

} // namespace

void addCards(CLI::App& app)
{
    CLI::App* const cards = app.add_subcommand("card", in({"smart cards and tokens", "스마트카드와 토큰"}));
    cards->require_subcommand(1);
    CLI::App* const command = cards->add_subcommand("read", in({"read a certificate or a key as it is stored", "저장된 인증서나 개인키를 그대로 읽습니다"}));
    const auto card = std::make_shared<Card>();
    command->add_option("--library", card->library, in({"the storage library", "저장매체 라이브러리"}))->required()->type_name("LIB");
    command->add_option("--type", card->type, in({"the role, 1, 2, 16 or 32, plus 0x1000 for each further device", "종류(1, 2, 16, 32). 장치마다 0x1000을 더합니다"}))
        ->required()
        ->type_name("N");
    command->add_option("WHAT", card->what, in({"cert or key", "cert 또는 key"}))->required()->check(CLI::IsMember({"cert", "key"}));
    addOutput(*command, card->output);
    addSecret(*command, "pin", card->pin);
    command->callback([card] { card->run(); });
}

} // namespace tool
