#include "files.h"

#include "problem.h"
#include "progress.h"
#include "terminal.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#ifdef _WIN32
#include <io.h>
#include <share.h>
#else
#include <unistd.h>
#endif

namespace tool {

namespace fs = std::filesystem;

// ---- the operating system ----

static fs::path pathOf(const std::string& name) { return fs::path(std::u8string(name.begin(), name.end())); }

#ifdef _WIN32
static int openToRead(const fs::path& path) { return _wopen(path.c_str(), _O_RDONLY | _O_BINARY); }
static int openToWrite(const fs::path& path, bool)
{
    return _wopen(path.c_str(), _O_WRONLY | _O_BINARY | _O_CREAT | _O_EXCL, _S_IREAD | _S_IWRITE);
}
static void makeBinary(int file) { _setmode(file, _O_BINARY); }
#else
static int openToRead(const fs::path& path) { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }
static int openToWrite(const fs::path& path, bool isSecret)
{
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, isSecret ? 0600 : 0666);
}
static void makeBinary(int) {}
#endif

namespace {

class Descriptor {
public:
    explicit Descriptor(int file) : m_file(file) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_file > 2) close(m_file);
    }
    operator int() const { return m_file; }

    // Whether the system took it all, which some file systems tell only now.
    bool isClosed() { return close(std::exchange(m_file, -1)) == 0; }

private:
    int m_file;
};

} // namespace

[[noreturn]] static void failBySystem(const std::string& name) { fail(name + ": " + std::strerror(errno)); }

// ---- reading ----

constexpr std::size_t pieceSize = 1 << 20;

static bool isStandard(const std::string& name) { return name.empty() || name == "-"; }

static std::size_t sizeOf(int file)
{
    struct stat status;
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
}

Octets readFile(const std::string& name)
{
    const std::string shown = isStandard(name) ? in({"standard input", "표준 입력"}) : name;
    const Descriptor file(isStandard(name) ? 0 : openToRead(pathOf(name)));
    if (file < 0) failBySystem(shown);
    makeBinary(file);
    const std::size_t expected = sizeOf(file);
    Progress progress(shown, expected);
    Octets octets;
    octets.reserve(expected + 1);
    for (std::size_t length = 0;;) {
        octets.resize(std::max(octets.capacity(), length + 1));
        const auto got = read(file, octets.data() + length, static_cast<unsigned>(std::min(pieceSize, octets.size() - length)));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) failBySystem(shown);
        length += static_cast<std::size_t>(got);
        progress.advanceTo(length);
        if (got == 0) {
            octets.resize(length);
            return octets;
        }
    }
}

// ---- writing ----

static void writeAll(int file, const std::string& shown, std::span<const unsigned char> octets)
{
    Progress progress(shown, octets.size());
    for (std::size_t done = 0; done < octets.size();) {
        const auto put = write(file, octets.data() + done, static_cast<unsigned>(std::min(pieceSize, octets.size() - done)));
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) failBySystem(shown);
        done += static_cast<std::size_t>(put);
        progress.advanceTo(done);
    }
}

void checkOutput(const Output& output)
{
    if (isStandard(output.name)) {
        if (!output.isText && isTerminal(1))
            fail(in({"Binary output is not written to a terminal: name a file with -o.",
                     "이진 출력은 터미널에 쓰지 않습니다. -o로 파일을 지정하십시오."}));
    } else if (std::error_code ignored; !output.replaces && fs::exists(fs::symlink_status(pathOf(output.name), ignored))) {
        failAt(output.name, {"The file is there already; --force replaces it.", "파일이 이미 있습니다. --force를 쓰면 덮어씁니다."});
    }
}

// A name beside the target that nobody has.
static fs::path temporaryFor(const fs::path& target)
{
    fs::path path = target;
    return path += ".tmp" + std::to_string(std::random_device()());
}

void writeOutput(const Output& output, std::span<const unsigned char> octets)
{
    checkOutput(output);
    if (isStandard(output.name)) {
        makeBinary(1);
        return writeAll(1, in({"standard output", "표준 출력"}), octets);
    }
    const fs::path target = pathOf(output.name), temporary = temporaryFor(target);
    Descriptor file(openToWrite(temporary, output.isSecret));
    if (file < 0) failBySystem(output.name);
    const auto remove = [](const fs::path* path) {
        std::error_code ignored;
        fs::remove(*path, ignored);
    };
    std::unique_ptr<const fs::path, decltype(remove)> failed(&temporary, remove);
    writeAll(file, output.name, octets);
    if (!file.isClosed()) failBySystem(output.name);
    std::error_code error;
    fs::rename(temporary, target, error);
    if (error) fail(output.name + ": " + error.message());
    failed.release();
}

} // namespace tool
