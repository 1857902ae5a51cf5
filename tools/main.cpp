// vrno: what people do with the certificates and keys of the Korean PKI, from a command line.
#include "commands.h"
#include "language.h"
#include "problem.h"
#include "terminal.h"
#include "toolkit.h"

#include "vrno.h"

#include <new>

using namespace tool;

// The language, before the words of help are chosen by it.
static std::string languageIn(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word.starts_with("--lang=")) return word.substr(7);
        if (word == "--lang" && i + 1 < argc) return argv[i + 1];
    }
    return "";
}

static void describe(CLI::App& app)
{
    static std::string language; // chosen already
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    app.fallthrough(); // -v and --lang behind a command, too
    app.set_help_flag("-h,--help", in({"this help", "이 도움말"}));
    app.set_version_flag("--version", "vrno " VRNO_VERSION, in({"the version", "버전"}));
    app.add_option("--lang", language, in({"the language of the words: ko or en", "언어: ko 또는 en"}))->check(CLI::IsMember({"ko", "en"}));
    app.add_flag("-v", isVerbose, in({"tell where a failure comes from", "오류가 난 위치를 함께 보여 줍니다"}));
    addCertificates(app);
    addSealing(app);
    addKeys(app);
    addCipher(app);
    addBase64(app);
    addCards(app);
    addExplain(app);
}

int main(int argc, char** argv)
{
    chooseLanguage(languageIn(argc, argv).c_str());
    CLI::App app(in({"Certificates, private keys and enveloped messages of the Korean PKI", "한국 공개키 기반구조(PKI)의 인증서, 개인키, 전자봉투"}), "vrno");
    describe(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error);
        return status == 0 ? success : usage;
    } catch (const Problem& problem) {
        printError("vrno: " + problem.text + "\n");
        return problem.status;
    } catch (const std::bad_alloc&) {
        printError(std::string("vrno: [1002] ") + in({"There is not enough memory.", "메모리가 부족합니다."}) + "\n");
        return failure;
    }
    return success;
}
