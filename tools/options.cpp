#include "options.h"

#include "language.h"

namespace tool {

void addOutput(CLI::App& command, Output& output)
{
    command.add_option("-o", output.name, in({"the file to write; standard output without it", "결과 파일. 없으면 표준 출력"}))
        ->type_name("OUT");
    command.add_flag("--force", output.replaces, in({"replace a file that is there", "이미 있는 파일을 덮어씁니다"}));
}

void addSecret(CLI::App& command, const std::string& name, SecretSource& source)
{
    command.add_option("--" + name + "-file", source.file, in({"a file that holds it", "값이 들어 있는 파일"}))->type_name("FILE");
    command.add_option("--" + name + "-fd", source.descriptor, in({"an open descriptor to read it from", "값을 읽을 파일 서술자"}))
        ->type_name("N");
}

void addInput(CLI::App& command, std::string& input, const char* name)
{
    command.add_option(name, input, in({"the file to read; standard input for - or without it", "읽을 파일. -이거나 없으면 표준 입력"}));
}

} // namespace tool
