// Reading an INI file and writing it back.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "Benchmarks/compare.d/Comparisons.h"
#include "Benchmarks/compare.d/Data.h"
#include "Common/ini/IniObj.h"

namespace {

constexpr int kKeysInASection = 100;

void MakeIni(const std::string& path, int keys) {
    std::ofstream out(path);
    for (int n = 0; n < keys; ++n) {
        if (n % kKeysInASection == 0) out << "[section" << n / kKeysInASection << "]\n";
        out << "key" << n % kKeysInASection << " = a value of usual length " << n << "\n";
    }
}

/// Python prints the seconds, so that starting it does not count. As ours it does the work once before.
constexpr char kScript[] =
    "import configparser, sys, time\n"
    "def work():\n"
    "    ini = configparser.ConfigParser()\n"
    "    ini.read(sys.argv[1])\n"
    "    with open(sys.argv[2], 'w') as out:\n"
    "        ini.write(out)\n"
    "work()\n"
    "start = time.perf_counter()\n"
    "work()\n"
    "print(time.perf_counter() - start)\n";

void LoadAndSave(const std::string& path) {
    CIniObj ini;
    if (!ini.load(path)) std::exit(1);
    ini.save();
}

double Python(const std::string& from, const std::string& to) {
    const std::string command = "python3 -c \"" + std::string(kScript) + "\" " + from + " " + to;
    FILE* const out = popen(command.c_str(), "r");
    double seconds = 0;
    if (out == nullptr || std::fscanf(out, "%lf", &seconds) != 1 || pclose(out) != 0) std::exit(1);
    return seconds;
}

}  // namespace

std::vector<Comparison> IniComparisons(const Scale& scale) {
    const std::string path = DataFolder() + "/keys.ini";
    const std::string theirs = DataFolder() + "/keys-of-python.ini";
    Comparison comparison;
    comparison.name = "read and write " + std::to_string(scale.keys) + " keys";
    comparison.against = "Python's configparser";
    comparison.goal = 0.1;
    comparison.items = scale.keys;
    comparison.prepare = [=] { MakeIni(path, scale.keys); };
    comparison.ours = [=] {
        LoadAndSave(path);
        return Timed([&] { LoadAndSave(path); });
    };
    comparison.theirs = [=] { return Python(path, theirs); };
    return {comparison};
}
