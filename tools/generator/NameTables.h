#pragma once

#include <QString>
#include <span>

// Word lists the generator draws realistic names and texts from.
namespace NameTables {

struct Han
{
    const char16_t *text;
    const char *pinyin;
};

std::span<const Han> surnames();
std::span<const Han> compoundSurnames();
std::span<const Han> maleGivenNames();
std::span<const Han> femaleGivenNames();
std::span<const char *const> latinMaleFirstNames();
std::span<const char *const> latinFemaleFirstNames();
std::span<const char *const> latinLastNames();

// Group names by level, for the regular and the guest tree.
std::span<const char16_t *const> regularGroupNames(int depth);
std::span<const char16_t *const> guestGroupNames(int depth);

std::span<const char16_t *const> rankNames();
std::span<const char16_t *const> cities(); // "北京市海淀区" style prefixes
std::span<const char16_t *const> streets();
std::span<const char16_t *const> descriptions();
std::span<const char16_t *const> nicknames(); // plain; some hold ' ; or \ characters
std::span<const char *const> mailDomains();
std::span<const char *const> guestMailDomains();

std::span<const char16_t *const> noticeTitles(); // "%1" is a topic
std::span<const char16_t *const> noticeTopics();
std::span<const char16_t *const> noticeSentences();
std::span<const char16_t *const> fileNames();

std::span<const char16_t *const> folderRoots();
std::span<const char16_t *const> folderNames();

std::span<const char16_t *const> chatLines();
std::span<const char16_t *const> systemEvents(); // "%1" is a number

} // namespace NameTables
