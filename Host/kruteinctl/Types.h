#pragma once

#include <string>

/// The type that a comma-separated list of words means: messages, whatsapp, wechat, contacts, or full alone.
/// \throws Failure (usage) for anything else.
int ParseTypes(const std::string& words);

/// The words of a type for people: "messages, whatsapp"; "full"; the number where it has no word.
std::string TypeWords(int type);

/// True for a type that keeps single apps' data only.
bool IsTyped(int type);
