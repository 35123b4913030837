#pragma once

#include <QString>

class MessageService;

// What the client shows in its caption bar: name, icon and left logo picture,
// in Serverinfo.ini [SettingInfo]. Every save raises Version, which is how the
// clients notice the change.
class CaptionBarSettings final
{
public:
    struct Values
    {
        QString iconPath;
        QString captionName;
        QString logoPath;
        bool defaultIcon = true;
        bool defaultLogo = true;
    };

    enum class IconCheck { Accepted, CannotOpen, TooLarge };

    explicit CaptionBarSettings(QString profilePath);

    // The clients refuse bigger icons; the message says 10K all the same.
    static constexpr qint64 MaxIconBytes = 9900;
    static const QString CannotOpenText; // "打开文件失败"
    static const QString TooLargeText; // "ICO文件大小不能超过10K"
    static constexpr int MaxCaptionLength = 50;

    Values load() const;
    static IconCheck checkIcon(const QString &path);
    // The logo's path as the field takes it: empty when the file does not open.
    static QString checkLogo(const QString &path);
    // Writes the values and raises Version; the caller then notifies port 55054.
    bool save(const Values &values);
    qint32 version() const;

private:
    QString m_profilePath;
};
