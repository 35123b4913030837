#include "EditCommandParser.h"

#include "MemberRules.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The words still to read of one command, and the first refusal.
class Words
{
public:
    Words(const QStringList &words, qsizetype first, QString command)
        : m_words(words)
        , m_next(first)
        , m_command(std::move(command))
    { }

    const QString &error() const { return m_error; }
    bool atEnd() const { return m_next >= m_words.size(); }
    const QString &peek() const { return m_words[m_next]; }
    // The next word; only when not at the end.
    const QString &next() { return m_words[m_next++]; }

    bool fail(const QString &message)
    {
        m_error = m_command + u": "_s + message;
        return false;
    }

    bool take(QStringView what, QString *out)
    {
        if (atEnd())
            return fail(u"missing "_s + what.toString());
        *out = m_words[m_next++];
        return true;
    }

    // One or more words up to the end.
    bool takeRest(QStringView what, QStringList *out)
    {
        if (atEnd())
            return fail(u"missing "_s + what.toString());
        *out = m_words.sliced(m_next);
        m_next = m_words.size();
        return true;
    }

    bool takeGroup(EditGroupRef *ref, bool rootAllowed)
    {
        QString word;
        if (!take(u"GROUP", &word))
            return false;
        return group(word, ref, rootAllowed);
    }

    bool group(const QString &word, EditGroupRef *ref, bool rootAllowed)
    {
        QString message;
        if (!EditGroupRef::parse(word, ref, &message))
            return fail(message);
        if (ref->isRoot() && !rootAllowed)
            return fail(u"GROUP must name a group, not the root: %1"_s.arg(word));
        return true;
    }

    bool finish()
    {
        if (!atEnd())
            return fail(u"unexpected argument: "_s + peek());
        return true;
    }

private:
    const QStringList &m_words;
    qsizetype m_next;
    QString m_command;
    QString m_error;
};

using Edit::MemberFields;

struct TextOption
{
    QStringView name;
    Edit::MemberText cell;
};

constexpr TextOption TextOptions[] = {
    { u"--name", Edit::MemberText::Name },
    { u"--password", Edit::MemberText::Password },
    { u"--nickname", Edit::MemberText::Nickname },
    { u"--email", Edit::MemberText::Email },
    { u"--mobile", Edit::MemberText::Mobile },
    { u"--phone", Edit::MemberText::HomePhone },
    { u"--office-phone", Edit::MemberText::OfficePhone },
    { u"--address", Edit::MemberText::Address },
    { u"--birthday", Edit::MemberText::Birthday },
    { u"--intro", Edit::MemberText::Intro },
};

// A flag pair: the option that sets the flag, the one that clears it.
struct FlagOption
{
    QStringView on;
    QStringView off;
    std::optional<bool> MemberFields::*field;
};

constexpr FlagOption FlagOptions[] = {
    { u"--male", u"--female", &MemberFields::male },
    { u"--public", u"--private", &MemberFields::isPublic },
    { u"--solar", u"--lunar", &MemberFields::solar },
    { u"--admin", u"--no-admin", &MemberFields::admin },
};

// The options after the user ID of "member add" (adding: only the halves
// that differ from a new member's all-set flags, and --guest) or of
// "member set".
bool parseMemberOptions(Words &words, bool adding, MemberFields *fields, bool *guest)
{
    while (!words.atEnd()) {
        const QString &word = words.next();
        if (!word.startsWith(u"--"))
            return words.fail(u"unexpected argument: "_s + word);
        const qsizetype equals = word.indexOf(u'=');
        const QString option = equals < 0 ? word : word.left(equals);

        const auto text = std::find_if(std::begin(TextOptions), std::end(TextOptions),
            [&](const TextOption &o) { return o.name == option; });
        if (text != std::end(TextOptions)) {
            QString value;
            if (equals >= 0)
                value = word.sliced(equals + 1);
            else if (words.atEnd())
                return words.fail(option + u": missing value"_s);
            else
                value = words.next();
            if (fields->text(text->cell))
                return words.fail(option + u" given twice"_s);
            if (text->cell == Edit::MemberText::Birthday && !MemberRules::isBirthdayText(value))
                return words.fail(option + u": expected YYYY-MM-DD, got "_s + value);
            fields->texts.append({ text->cell, value });
            continue;
        }

        bool known = false;
        if (adding && option == u"--guest") {
            if (equals >= 0)
                return words.fail(option + u" takes no value"_s);
            if (*guest)
                return words.fail(option + u" given twice"_s);
            *guest = true;
            continue;
        }
        for (const FlagOption &flag : FlagOptions) {
            const bool on = option == flag.on && !adding;
            if (!on && option != flag.off)
                continue;
            known = true;
            if (equals >= 0)
                return words.fail(option + u" takes no value"_s);
            std::optional<bool> &field = fields->*(flag.field);
            if (field && *field == on)
                return words.fail(option + u" given twice"_s);
            if (field)
                return words.fail(u"%1 and %2 given together"_s.arg(flag.on, flag.off));
            field = on;
            break;
        }
        if (!known)
            return words.fail(u"unknown option: "_s + option);
    }
    return true;
}

bool parseMember(Words &words, const QString &sub, Edit::Operation *op)
{
    if (sub == u"add" || sub == u"set") {
        const bool adding = sub == u"add";
        // The user ID comes first, so that a user ID is never taken for an
        // option's value.
        if (words.atEnd())
            return words.fail(u"missing USERID"_s);
        if (words.peek().startsWith(u"--"))
            return words.fail(u"missing USERID before "_s + words.peek());
        const QString userId = words.next();
        MemberFields fields;
        bool guest = false;
        if (!parseMemberOptions(words, adding, &fields, &guest))
            return false;
        if (adding)
            *op = Edit::MemberAdd { userId, guest, fields };
        else
            *op = Edit::MemberSet { userId, fields };
        return true;
    }
    Edit::MemberDelete del;
    if (!words.takeRest(u"USERID", &del.userIds))
        return false;
    *op = del;
    return true;
}

bool parseGroup(Words &words, const QString &sub, Edit::Operation *op)
{
    EditGroupRef group;
    if (!words.takeGroup(&group, false))
        return false;
    if (sub == u"add") {
        *op = Edit::GroupAdd { group };
    } else if (sub == u"rename") {
        QString name;
        if (!words.take(u"NAME", &name))
            return false;
        *op = Edit::GroupRename { group, name };
    } else if (sub == u"delete") {
        *op = Edit::GroupDelete { group };
    } else {
        QString step;
        if (!words.take(u"up, down, first, last or into GROUP", &step))
            return false;
        if (step == u"into") {
            EditGroupRef into;
            if (!words.takeGroup(&into, true))
                return false;
            *op = Edit::GroupMoveInto { group, into };
        } else if (step == u"up") {
            *op = Edit::GroupMove { group, Edit::GroupMoveStep::Up };
        } else if (step == u"down") {
            *op = Edit::GroupMove { group, Edit::GroupMoveStep::Down };
        } else if (step == u"first") {
            *op = Edit::GroupMove { group, Edit::GroupMoveStep::First };
        } else if (step == u"last") {
            *op = Edit::GroupMove { group, Edit::GroupMoveStep::Last };
        } else {
            return words.fail(u"expected up, down, first, last or into GROUP, got "_s + step);
        }
    }
    return true;
}

bool parsePosition(Words &words, const QString &sub, Edit::Operation *op)
{
    if (sub == u"add") {
        Edit::PositionAdd add;
        if (!words.atEnd())
            add.name = words.next();
        *op = add;
        return true;
    }
    QString name;
    if (!words.take(sub == u"default" ? u"NAME or none" : u"NAME", &name))
        return false;
    if (sub == u"rename") {
        QString newName;
        if (!words.take(u"NEW", &newName))
            return false;
        *op = Edit::PositionRename { name, newName };
    } else if (sub == u"delete") {
        *op = Edit::PositionDelete { name };
    } else if (sub == u"default") {
        Edit::PositionDefault def;
        if (name != u"none")
            def.name = name;
        *op = def;
    } else {
        QString step;
        if (!words.take(u"up or down", &step))
            return false;
        if (step != u"up" && step != u"down")
            return words.fail(u"expected up or down, got "_s + step);
        *op = Edit::PositionMove { name, step == u"up" };
    }
    return true;
}

constexpr QStringView FeatureNames[Edit::FeatureCount] = {
    u"message",
    u"chat",
    u"file",
    u"tts",
    u"video",
    u"call",
    u"sms",
    u"voip",
};

bool parsePermission(Words &words, Edit::Operation *op)
{
    Edit::PermissionSet set;
    QString target;
    if (!words.take(u"USERID or GROUP", &target))
        return false;
    if (EditGroupRef::looksLikeGroup(target)) {
        EditGroupRef group;
        if (!words.group(target, &group, true))
            return false;
        set.target = group;
    } else {
        set.target = target;
    }
    QStringList settings;
    if (!words.takeRest(u"FEATURE=on|off", &settings))
        return false;
    for (const QString &setting : settings) {
        const qsizetype equals = setting.indexOf(u'=');
        if (equals < 0)
            return words.fail(u"expected FEATURE=on|off, got "_s + setting);
        const QStringView name = QStringView(setting).left(equals);
        const QStringView value = QStringView(setting).sliced(equals + 1);
        const auto *feature = std::find(std::begin(FeatureNames), std::end(FeatureNames), name);
        if (feature == std::end(FeatureNames)) {
            return words.fail(u"unknown feature: %1 (expected message, chat, file, tts, video, "
                              u"call, sms or voip)"_s.arg(name));
        }
        if (value != u"on" && value != u"off")
            return words.fail(u"%1: expected on or off, got %2"_s.arg(name, value));
        std::optional<bool> &flag = set.flags[size_t(feature - std::begin(FeatureNames))];
        if (flag)
            return words.fail(u"%1 given twice"_s.arg(name));
        flag = value == u"on";
    }
    *op = set;
    return true;
}

bool parseRight(Words &words, Edit::Operation *op)
{
    Edit::RightSet set;
    QString kind;
    if (!words.take(u"FOLDER", &set.folder) || !words.take(u"group or member", &kind))
        return false;
    if (kind == u"group") {
        EditGroupRef group;
        if (!words.takeGroup(&group, false))
            return false;
        set.holder = group;
    } else if (kind == u"member") {
        QString userId;
        if (!words.take(u"USERID", &userId))
            return false;
        set.holder = userId;
    } else {
        return words.fail(u"expected group GROUP or member USERID, got "_s + kind);
    }
    QString authority;
    if (!words.take(u"none, read or write", &authority))
        return false;
    if (authority == u"none")
        set.authority = Edit::Authority::None;
    else if (authority == u"read")
        set.authority = Edit::Authority::Read;
    else if (authority == u"write")
        set.authority = Edit::Authority::Write;
    else
        return words.fail(u"expected none, read or write, got "_s + authority);
    *op = set;
    return true;
}

bool parseNotices(Words &words, Edit::Operation *op)
{
    QStringList texts;
    if (!words.takeRest(u"ID", &texts))
        return false;
    Edit::NoticeDelete del;
    for (const QString &text : texts) {
        bool ok = !text.isEmpty();
        for (const QChar c : text)
            ok = ok && c >= u'0' && c <= u'9';
        const qint32 id = ok ? text.toInt(&ok) : 0;
        if (!ok)
            return words.fail(u"bad notice ID: "_s + text);
        del.ids.append(id);
    }
    *op = del;
    return true;
}

// The commands: a first word and, for most, a second one.
struct Family
{
    QStringView word;
    QList<QStringView> subcommands; // empty: the first word alone is the command
};

const Family Families[] = {
    { u"member", { u"add", u"set", u"delete" } },
    { u"group", { u"add", u"rename", u"delete", u"move" } },
    { u"place", {} },
    { u"unplace", {} },
    { u"membership", { u"position" } },
    { u"position", { u"add", u"rename", u"delete", u"default", u"move" } },
    { u"permission", { u"set" } },
    { u"voip", { u"set", u"assign" } },
    { u"folder", { u"add", u"remove" } },
    { u"right", { u"set" } },
    { u"notice", { u"delete" } },
};

QString choiceList(const QList<QStringView> &choices)
{
    QString text;
    for (qsizetype i = 0; i < choices.size(); ++i) {
        if (i > 0)
            text += i + 1 == choices.size() ? u" or "_s : u", "_s;
        text += choices[i];
    }
    return text;
}

} // namespace

bool EditCommandParser::isCommandWord(QStringView word)
{
    return std::any_of(std::begin(Families), std::end(Families),
        [word](const Family &family) { return family.word == word; });
}

QStringList EditCommandParser::commands()
{
    QStringList names;
    for (const Family &family : Families) {
        if (family.subcommands.isEmpty())
            names.append(family.word.toString());
        for (QStringView sub : family.subcommands)
            names.append(family.word.toString() + u' ' + sub.toString());
    }
    return names;
}

QStringList EditCommandParser::memberOptions()
{
    QStringList names { u"--guest"_s };
    for (const TextOption &text : TextOptions)
        names.append(text.name.toString());
    for (const FlagOption &flag : FlagOptions)
        names.append({ flag.on.toString(), flag.off.toString() });
    return names;
}

bool EditCommandParser::takesValue(QStringView option)
{
    return std::any_of(std::begin(TextOptions), std::end(TextOptions),
        [option](const TextOption &text) { return text.name == option; });
}

EditCommandParser::Result EditCommandParser::parse(const QStringList &words, int line)
{
    Result result;
    if (words.isEmpty()) {
        result.error = u"missing command"_s;
        return result;
    }
    const QString &first = words.first();
    const auto family = std::find_if(
        std::begin(Families), std::end(Families), [&](const Family &f) { return f.word == first; });
    if (family == std::end(Families)) {
        result.error = u"unknown command: "_s + first;
        return result;
    }

    QString sub;
    QString command = first;
    qsizetype next = 1;
    if (!family->subcommands.isEmpty()) {
        if (words.size() < 2) {
            result.error = first + u": missing "_s + choiceList(family->subcommands);
            return result;
        }
        sub = words[1];
        if (!family->subcommands.contains(QStringView(sub))) {
            result.error = u"unknown command: "_s + first + u' ' + sub;
            return result;
        }
        command += u' ' + sub;
        next = 2;
    }

    Words rest(words, next, command);
    Edit::Operation op;
    bool ok = false;
    if (first == u"member") {
        ok = parseMember(rest, sub, &op);
    } else if (first == u"group") {
        ok = parseGroup(rest, sub, &op);
    } else if (first == u"place") {
        Edit::Place place;
        ok = rest.takeGroup(&place.group, true) && rest.takeRest(u"USERID", &place.userIds);
        op = place;
    } else if (first == u"unplace") {
        Edit::Unplace unplace;
        ok = rest.takeGroup(&unplace.group, true) && rest.take(u"USERID", &unplace.userId);
        op = unplace;
    } else if (first == u"membership") {
        Edit::MembershipPosition position;
        QString name;
        ok = rest.takeGroup(&position.group, true) && rest.take(u"USERID", &position.userId)
            && rest.take(u"NAME or none", &name);
        if (name != u"none")
            position.position = name;
        op = position;
    } else if (first == u"position") {
        ok = parsePosition(rest, sub, &op);
    } else if (first == u"permission") {
        ok = parsePermission(rest, &op);
    } else if (first == u"voip") {
        if (sub == u"set") {
            Edit::VoipSet set;
            ok = rest.take(u"USERID", &set.userId) && rest.take(u"ID", &set.account)
                && rest.take(u"PASS", &set.password);
            op = set;
        } else {
            ok = true;
            op = Edit::VoipAssign {};
        }
    } else if (first == u"folder") {
        QString path;
        ok = rest.take(u"PATH", &path);
        if (sub == u"add")
            op = Edit::FolderAdd { path };
        else
            op = Edit::FolderRemove { path };
    } else if (first == u"right") {
        ok = parseRight(rest, &op);
    } else {
        ok = parseNotices(rest, &op);
    }

    if (ok)
        ok = rest.finish();
    if (!ok) {
        result.error = rest.error();
        return result;
    }
    result.command = EditCommand { line, std::move(op) };
    return result;
}
