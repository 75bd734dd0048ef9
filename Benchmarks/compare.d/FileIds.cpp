#include <cstdlib>

#include "Benchmarks/compare.d/BareHash.h"
#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Common/std/std_sha1.h"

namespace {

std::vector<MadeFile> Files(int count) {
    std::vector<MadeFile> files;
    files.reserve(static_cast<std::size_t>(count));
    for (int n = 0; n < count; ++n)
        files.push_back(FileNumber(n));
    return files;
}

std::vector<std::string> TextsOf(const std::vector<MadeFile>& files) {
    std::vector<std::string> texts;
    texts.reserve(files.size());
    for (const MadeFile& file : files)
        texts.push_back(file.domain + "-" + file.path);
    return texts;
}

/// The bare hash over the same texts, put together beforehand.
double HashAlone(int count) {
    const std::vector<std::string> texts = TextsOf(Files(count));
    BareHash hash;
    unsigned sum = 0;
    const double seconds = Timed([&] {
        for (const std::string& text : texts)
            sum += hash.Of(text);
    });
    if (sum == 0) std::exit(1);
    return seconds;
}

/// What the function's signature asks for besides the hash: a text that comes by value, and one that goes
/// out.
__attribute__((noinline)) std::string TextsInAndOut(std::string domain, unsigned char digest) {
    domain.push_back('-');
    return std::string(40, static_cast<char>('a' + digest % 16));
}

double HashAndTexts(int count) {
    const std::vector<MadeFile> files = Files(count);
    const std::vector<std::string> texts = TextsOf(files);
    BareHash hash;
    std::size_t length = 0;
    const double seconds = Timed([&] {
        for (std::size_t i = 0; i < texts.size(); ++i)
            length += TextsInAndOut(files[i].domain, hash.Of(texts[i])).size();
    });
    if (length == 0) std::exit(1);
    return seconds;
}

double OurIds(int count) {
    const std::vector<MadeFile> files = Files(count);
    std::size_t length = 0;
    const double seconds = Timed([&] {
        for (const MadeFile& file : files)
            length += STD_FILE_CalcDomainPathSha1A(file.domain, file.path).size();
    });
    if (length != 40 * files.size()) std::exit(1);
    return seconds;
}

}  // namespace

std::vector<Comparison> FileIdComparisons(const Scale& scale) {
    Comparison comparison;
    comparison.name = std::to_string(scale.ids) + " file IDs";
    comparison.against = "the bare hash";
    comparison.goal = 1.15;
    comparison.items = scale.ids;
    comparison.ours = [count = scale.ids] { return OurIds(count); };
    comparison.theirs = [count = scale.ids] { return HashAlone(count); };
    Comparison limit;
    limit.name = "  limit of file IDs: hash, texts in and out";
    limit.against = comparison.against;
    limit.ours = [count = scale.ids] { return HashAndTexts(count); };
    limit.theirs = comparison.theirs;
    return {comparison, limit};
}
