#include "Host/kruteinctl/Destination.h"

#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>

#include "Host/kruteinctl/Folder.h"
#include "Host/kruteinctl/Text.h"

Destination::Destination(const std::string& folder)
    : m_folder(folder), m_isNew(!std::filesystem::exists(folder)) {
    EnsureWritable(folder);
}

Destination::~Destination() {
    if (m_isNew) rmdir(m_folder.c_str());  // refused, and rightly, when something is in it
}

void Destination::CheckSpace(Session& session, std::uint64_t neededBytes) const {
    const std::uint64_t available = FreeBytes(m_folder);
    const std::string numbers = fmt::format("the backup takes {}; {} has {} free", ExactBytes(neededBytes),
                                            Printable(m_folder), ExactBytes(available));
    if (neededBytes > available) throw Failure(ExitCode::kDiskFull, "not enough space: " + numbers);
    session.Note(numbers);
}
