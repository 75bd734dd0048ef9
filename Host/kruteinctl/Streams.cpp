#include "Host/kruteinctl/Streams.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Host/kruteinctl/Text.h"

namespace {

constexpr std::size_t kUsualColumns = 80;
/// A line that is longer is handed on in pieces.
constexpr std::size_t kMaxLineBytes = 8192;

FILE* OwnStream(int descriptor) {
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    FILE* const stream = copy < 0 ? nullptr : fdopen(copy, "w");
    if (stream == nullptr) throw std::system_error(errno, std::generic_category(), "no output stream");
    return stream;
}

/// pkill says this about every name of more than 15 characters that the library lets it look for.
bool IsNoise(const std::string& line) {
    return line.rfind("pkill: ", 0) == 0 || line.rfind("Try `pkill", 0) == 0;
}

}  // namespace

Streams::Streams()
    : m_out(OwnStream(STDOUT_FILENO)),
      m_errors(OwnStream(STDERR_FILENO)),
      m_outIsTerminal(isatty(STDOUT_FILENO) == 1),
      m_errorsAreTerminal(isatty(STDERR_FILENO) == 1) {
    setvbuf(m_errors, nullptr, _IONBF, 0);
    const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nothing < 0) return;
    dup2(nothing, STDOUT_FILENO);
    close(nothing);
}

Streams::~Streams() {
    std::fclose(m_out);
    std::fclose(m_errors);
}

std::size_t Streams::TerminalColumns() const {
    winsize size{};
    if (ioctl(fileno(m_out), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualColumns;
    return size.ws_col;
}

Style Streams::OutStyle() const {
    return {OutIsDrawable() && ColoursAreWanted(), m_outIsTerminal ? TerminalColumns() : 0};
}

Style Streams::ErrorStyle() const {
    return {m_errorsAreTerminal && TerminalHasControls() && ColoursAreWanted(), 0};
}

CollectedErrors::CollectedErrors(std::function<void(const std::string&)> onLine)
    : m_onLine(std::move(onLine)) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0 || pipe(m_stop) != 0)
        throw std::system_error(errno, std::generic_category(), "no pipe");
    for (const int end : {ends[0], ends[1], m_stop[0], m_stop[1]})
        fcntl(end, F_SETFD, FD_CLOEXEC);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    m_lines = ends[0];
    m_before = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    m_collector = std::thread([this] { Collect(); });
}

CollectedErrors::~CollectedErrors() {
    dup2(m_before, STDERR_FILENO);
    close(m_stop[1]);
    m_collector.join();
    for (const int descriptor : {m_before, m_lines, m_stop[0]})
        close(descriptor);
}

void CollectedErrors::Collect() {
    pollfd waited[2] = {{m_lines, POLLIN, 0}, {m_stop[0], POLLIN, 0}};
    while (waited[1].revents == 0) {
        if (poll(waited, 2, -1) < 0 && errno != EINTR) break;
        TakeBytes();
    }
    if (!m_rest.empty()) TakeLine(m_rest);
}

void CollectedErrors::TakeBytes() {
    char bytes[4096];
    for (;;) {
        const ssize_t count = read(m_lines, bytes, sizeof bytes);
        if (count <= 0) return;
        m_rest.append(bytes, static_cast<std::size_t>(count));
        std::size_t begin = 0;
        for (std::size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n', begin)) {
            TakeLine(m_rest.substr(begin, end - begin));
            begin = end + 1;
        }
        m_rest.erase(0, begin);
        if (m_rest.size() < kMaxLineBytes) continue;
        TakeLine(m_rest);
        m_rest.clear();
    }
}

void CollectedErrors::TakeLine(const std::string& line) {
    if (!IsNoise(line)) m_onLine(Printable(line));
}
