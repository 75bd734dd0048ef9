#include <algorithm>
#include <atomic>
#include <memory>

#include "Common/std/folder.h"
#include "Common/std/second_hand.h"

namespace krutein {
namespace {

/// Looked at by one thread in one go; fewer names than the least take less time than handing them over.
constexpr std::size_t kNamesInOneGo = 500;
constexpr std::size_t kFewNames = 16;

/// Adds up the sizes on two threads: one look at each file is all there is to do.
class Measurement {
 public:
    long long Of(const std::string& path) {
        Measure(path);
        m_work.Finish();
        return m_total;
    }

 private:
    using Folder = std::shared_ptr<const OpenedFolder>;
    using Names = std::shared_ptr<const FolderNames>;

    void Measure(const std::string& path) {
        const Names names = AddFilesOf(path);
        if (names == nullptr || !names->HasFolder()) return;
        for (const FolderNames::Entry& entry : names->Entries()) {
            if (entry.isFolder) Measure(path + "/" + names->NameOf(entry));
        }
    }

    /// \return the names, with the folder closed as soon as it can be: a deep tree must not use up the
    ///         descriptors. Null when it cannot be opened.
    Names AddFilesOf(const std::string& path) {
        const auto folder = std::make_shared<OpenedFolder>();
        if (!folder->Open(path, true)) return nullptr;
        const auto names = std::make_shared<FolderNames>();
        folder->ReadAll(*names);
        for (std::size_t first = 0; first < names->Entries().size(); first += kNamesInOneGo)
            AddPart(folder, names, first);
        return names;
    }

    void AddPart(const Folder& folder, const Names& names, std::size_t first) {
        const std::size_t count = std::min(kNamesInOneGo, names->Entries().size() - first);
        if (count < kFewNames) {
            AddBytes(*folder, *names, first, count);
        } else {
            m_work.Do([this, folder, names, first, count] { AddBytes(*folder, *names, first, count); });
        }
    }

    void AddBytes(const OpenedFolder& folder, const FolderNames& names, std::size_t first,
                  std::size_t count) {
        long long bytes = 0;
        for (std::size_t i = first; i < first + count; ++i) {
            const FolderNames::Entry& entry = names.Entries()[i];
            if (!entry.isFolder) bytes += folder.BytesOf(names.NameOf(entry));
        }
        m_total += bytes;
    }

    std::atomic<long long> m_total{0};
    SecondHand m_work;  ///< last: its tasks use the others
};

}  // namespace

long long FolderBytes(const std::string& path) {
    return Measurement().Of(path);
}

}  // namespace krutein
