// Lists of words or lines, joined.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

inline Words Joined(std::initializer_list<Words> parts) {
    Words all;
    for (const Words& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}
