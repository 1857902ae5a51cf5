// vrno explain: what a result code means.
#include "codes.h"
#include "commands.h"
#include "problem.h"
#include "terminal.h"

#include <charconv>

namespace tool {

static std::string explained(const Code& code)
{
    return std::to_string(code.number) + "  " + code.name + "\n" + in(code.meaning) + "\n\n" + in({"Why: ", "원인: "}) + in(code.cause) +
           "\n" + in({"What to do: ", "조치: "}) + in(code.remedy) + "\n";
}

static void explain(const std::string& word)
{
    int number = 0;
    const auto [rest, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || rest != word.data() + word.size())
        throw Problem{usage, word + ": " + in({"This is no number.", "숫자가 아닙니다."})};
    const Code* const code = findCode(number);
    if (!code) failAt(word, {"The toolkit has no such code.", "그런 코드는 없습니다."});
    print(explained(*code));
}

void addExplain(CLI::App& app)
{
    CLI::App* const command = app.add_subcommand("explain", in({"what a result code means, why it comes, what to do",
                                                                "결과 코드의 뜻과 원인, 조치 방법"}));
    const auto word = std::make_shared<std::string>();
    command->add_option("CODE", *word, in({"the code, as 2004", "코드, 예: 2004"}))->required();
    command->callback([word] { explain(*word); });
}

} // namespace tool
