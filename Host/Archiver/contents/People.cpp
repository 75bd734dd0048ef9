#include "Host/Archiver/contents/People.h"

#include <iterator>

namespace krutein {
namespace {

constexpr const char* kFirstNames[] = {"Anna",   "Ben",  "Chloé", "David", "Elif", "Farid", "Grete", "Hiro",
                                       "Ingrid", "Jörg", "Kaya",  "Luis",  "Mei",  "Noah",  "Olga",  "Paul",
                                       "Quinn",  "Rosa", "Søren", "Tomás", "Ulla", "Vera",  "伟",    "Zoë"};
constexpr const char* kLastNames[] = {
    "Almeida", "Berg",   "Castro",    "Dubois", "Eriksen", "Fischer", "García", "Hansen", "Ito",
    "Jansen",  "Kovács", "Lindqvist", "Müller", "Novák",   "O'Brien", "Park",   "Quist",  "Rossi",
    "Schäfer", "Tanaka", "Ueda",      "Vogel",  "Wright",  "Yılmaz",  "王"};

constexpr const char* kPhrases[] = {
    "On my way 🚲",
    "Can you send me the photos from Saturday?",
    "Sure!",
    "The train is late again, start without me.",
    "Happy birthday! 🎂🎉",
    "Did you see the message from the landlord?",
    "Lunch at twelve?",
    "好的,明天见。",
    "Ich bringe Brot und Käse mit.",
    "Thanks a lot :)",
    "Where did you put the spare key?",
    "It's under the third flower pot, as always.",
    "¿Quedamos a las ocho?",
    "I'll call you after the meeting.",
    "Voilà, c'est réglé.",
    "The code is 4711, don't tell anyone.",
    "明日の会議は10時からです。",
    "Look at this 😄",
    "Two tickets for Friday, row 7.",
    "OK",
    "Have you backed up your phone?",
    "Not yet. \"Tomorrow\", I said -- last week...",
    "Line one\nLine two\nLine three",
    "See you there.",
};

}  // namespace

Person PersonAt(std::int64_t index) {
    constexpr auto kFirst = static_cast<std::int64_t>(std::size(kFirstNames));
    constexpr auto kLast = static_cast<std::int64_t>(std::size(kLastNames));
    return {kFirstNames[index % kFirst], kLastNames[(index + index / kFirst) % kLast],
            "+1555" + Padded(index, 7), "person" + std::to_string(index) + "@example.com"};
}

std::string PhraseAt(std::uint64_t number) {
    return kPhrases[number % std::size(kPhrases)];
}

std::string PictureName(std::int64_t number) {
    return "IMG_" + Padded(number, 4) + ".JPG";
}

std::string Padded(std::int64_t number, std::size_t digits) {
    std::string text = std::to_string(number);
    if (text.size() < digits) text.insert(0, digits - text.size(), '0');
    return text;
}

}  // namespace krutein
