#pragma once

#include <cstdint>
#include <string>

/// The people that a sample device knows, and what they write. They are the same in contacts and in the chats
/// of all apps.
namespace krutein {

struct Person {
    std::string firstName;
    std::string lastName;
    std::string phone;  ///< "+15550000001"
    std::string email;

    std::string FullName() const { return firstName + " " + lastName; }
};

/// \param index  from 0; different people have different phone numbers and mail addresses.
Person PersonAt(std::int64_t index);

/// A short message. \param number  any.
std::string PhraseAt(std::uint64_t number);

/// "IMG_0001.JPG" for 1; at least four digits.
std::string PictureName(std::int64_t number);

/// The number with zeros in front.
std::string Padded(std::int64_t number, std::size_t digits);

/// Sample messages are sent ten minutes apart from this time on, in seconds since 1970.
constexpr std::int64_t kFirstMessageTime = 1'704'096'000;  // 2024-01-01 08:00:00 UTC
constexpr std::int64_t kSecondsBetweenMessages = 600;

/// Seconds since 1970.
constexpr std::int64_t MessageTime(std::int64_t message) {
    return kFirstMessageTime + message * kSecondsBetweenMessages;
}

/// Many databases on the device count from 2001-01-01. Seconds.
constexpr std::int64_t SecondsSince2001(std::int64_t unixTime) {
    return unixTime - 978'307'200;
}

}  // namespace krutein
