// Which headers are installed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

/// The headers of a folder, as paths from it.
std::set<std::string> HeadersBelow(const fs::path& folder) {
    std::set<std::string> headers;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().extension() == ".h") headers.insert(fs::relative(entry.path(), folder).string());
    }
    return headers;
}

/// What a header includes of the project.
std::set<std::string> IncludesOf(const std::string& header) {
    static const std::regex include("(?:^|\n)#include \"([^\"]+)\"");
    const std::string text = ReadWholeFile(header);
    std::set<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), include), end; at != end; ++at)
        found.insert((*at)[1]);
    return found;
}

/// A header and what it includes, directly or not.
void AddWithIncludes(const std::string& header, std::set<std::string>& headers) {
    if (!headers.insert(header).second) return;
    for (const std::string& included : IncludesOf(std::string(SOURCES "/") + header))
        AddWithIncludes(included, headers);
}

}  // namespace

TEST(InstalledHeaders, AreThoseThatDeclareWhatIsExported) {
    std::set<std::string> expected = {"Common/Version.h"};
    for (const std::string folder : {"Common", "Module"}) {
        for (const std::string& header : HeadersBelow(fs::path(SOURCES) / folder)) {
            const std::string name = (fs::path(folder) / header).string();
            const bool isPublic =
                ReadWholeFile(std::string(SOURCES "/") + name).find("KRUTEIN_API") != std::string::npos;
            if (isPublic) AddWithIncludes(name, expected);
        }
    }
    EXPECT_EQ(HeadersBelow(INSTALLED_HEADERS), expected);
}
