#pragma once

// The form views the outlook bar switches among.
namespace ViewId {
constexpr int Home = 0;
constexpr int Organize = 1;
constexpr int Position = 2;
constexpr int AccessControl = 3;
constexpr int FileBox = 4;
constexpr int Notice = 5;
constexpr int ChatLog = 6;
constexpr int SystemLog = 7;
constexpr int UserLog = 8;
} // namespace ViewId
