#include "terminal.h"

#include "problem.h"

#include <cstdio>

#ifdef _WIN32
#include <windows.h>

#include <io.h>
#else
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace tool {

bool isTerminal(int file) { return isatty(file) == 1; }

// ---- Windows ----

#ifdef _WIN32

static std::wstring wide(const std::string& text)
{
    std::wstring out(text.size(), L'\0');
    out.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), out.data(), static_cast<int>(out.size()))));
    return out;
}

static void put(std::FILE* file, DWORD handle, const std::string& text)
{
    DWORD mode, written;
    const HANDLE console = GetStdHandle(handle);
    std::fflush(file);
    if (!GetConsoleMode(console, &mode)) {
        std::fwrite(text.data(), 1, text.size(), file);
        return;
    }
    const std::wstring out = wide(text);
    WriteConsoleW(console, out.data(), static_cast<DWORD>(out.size()), &written, nullptr);
}

void print(const std::string& text) { put(stdout, STD_OUTPUT_HANDLE, text); }
void printError(const std::string& text) { put(stderr, STD_ERROR_HANDLE, text); }

static std::optional<Secret> readWithoutEcho(const std::string& prompt)
{
    const HANDLE console = CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD mode, length = 0;
    if (console == INVALID_HANDLE_VALUE || !GetConsoleMode(console, &mode)) return std::nullopt;
    printError(prompt);
    SetConsoleMode(console, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT);
    wchar_t line[512];
    const bool isRead = ReadConsoleW(console, line, 510, &length, nullptr);
    SetConsoleMode(console, mode);
    CloseHandle(console);
    printError("\n");
    while (length > 0 && (line[length - 1] == L'\n' || line[length - 1] == L'\r')) --length;
    Secret secret(4 * static_cast<std::size_t>(length), '\0');
    const int got = WideCharToMultiByte(CP_UTF8, 0, line, static_cast<int>(length), secret.data(), static_cast<int>(secret.size()), nullptr,
                                        nullptr);
    secret.resize(isRead ? static_cast<std::size_t>(got) : 0);
    SecureZeroMemory(line, sizeof line);
    return secret;
}

// ---- elsewhere ----

#else

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }
void printError(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stderr); }

namespace {

// The terminal of the process without its echo; the destructor gives it back, and signals wait for that.
class Silence {
public:
    explicit Silence(int terminal) : m_terminal(terminal)
    {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &m_signals);
        tcgetattr(terminal, &m_settings);
        termios silent = m_settings;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG);
        tcsetattr(terminal, TCSAFLUSH, &silent);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence()
    {
        tcsetattr(m_terminal, TCSAFLUSH, &m_settings);
        sigprocmask(SIG_SETMASK, &m_signals, nullptr);
    }

private:
    int m_terminal;
    termios m_settings;
    sigset_t m_signals;
};

constexpr char interrupt = '\x03';

} // namespace

static std::optional<Secret> readWithoutEcho(const std::string& prompt)
{
    const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
    if (terminal < 0) return std::nullopt;
    Secret secret;
    char next = '\n';
    {
        const Silence silence(terminal);
        if (write(terminal, prompt.data(), prompt.size()) < 0) next = '\0';
        while (read(terminal, &next, 1) == 1 && next != '\n' && next != interrupt) secret.push_back(next);
        if (write(terminal, "\n", 1) < 0) next = '\n';
    }
    close(terminal);
    if (next == interrupt) fail(in({"Interrupted.", "중단되었습니다."}));
    return secret;
}

#endif

// ---- secrets ----

static Secret secretOf(const Octets& octets)
{
    std::size_t length = octets.size();
    if (length > 0 && octets[length - 1] == '\n') --length;
    if (length > 0 && octets[length - 1] == '\r') --length;
    return Secret(octets.begin(), octets.begin() + static_cast<std::ptrdiff_t>(length));
}

static Octets readDescriptor(int descriptor)
{
    Octets octets;
    for (unsigned char next; read(descriptor, &next, 1) == 1;) octets.push_back(next);
    return octets;
}

static Secret ask(const std::string& prompt)
{
    const std::optional<Secret> secret = readWithoutEcho(prompt);
    if (!secret) fail(in({"There is no terminal to ask for it: use --password-file or --password-fd (--pin-file, --pin-fd).",
                          "물어볼 터미널이 없습니다. --password-file이나 --password-fd(--pin-file, --pin-fd)를 쓰십시오."}));
    return *secret;
}

Secret readSecret(const SecretSource& source, const std::string& prompt, bool twice)
{
    const bool isAsked = source.file.empty() && !source.descriptor;
    const Secret secret = isAsked                ? ask(prompt + ": ")
                          : source.file.empty() ? secretOf(readDescriptor(*source.descriptor))
                                                : secretOf(readFile(source.file));
    if (secret.empty()) failAt(prompt, {"It is empty.", "비어 있습니다."});
    if (secret.find('\0') != Secret::npos) failAt(prompt, {"It holds a zero byte.", "0 바이트가 들어 있습니다."});
    if (isAsked && twice && ask(prompt + in({" (again): ", " 확인: "})) != secret)
        failAt(prompt, {"The two are not the same.", "두 값이 서로 다릅니다."});
    return secret;
}

} // namespace tool
