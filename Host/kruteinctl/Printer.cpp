#include "Host/kruteinctl/Printer.h"

#include <cerrno>
#include <system_error>

#include "Host/kruteinctl/Failure.h"

void Printer::Put(const std::string& line) {
    if (m_closed) return;
    if (std::fwrite(line.data(), 1, line.size(), m_out) != line.size()) Failed();
}

void Printer::Flush() {
    if (!m_closed && std::fflush(m_out) != 0) Failed();
}

void Printer::Failed() {
    m_closed = true;
    if (errno == EPIPE) return;
    throw Failure(ExitCode::kFailed, "cannot write the output: " + std::generic_category().message(errno));
}
