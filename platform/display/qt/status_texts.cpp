#include "status_texts.h"

#include "shown_text.h"

#include "ce/file.h"
#include "ce/progress.h"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace platform::qt {

namespace {

using kernel::RunProgress;
using window::StatusState;

constexpr std::size_t Files = 0;
constexpr std::size_t Databases = 1;
constexpr std::size_t Registry = 2;

QString bytesText(std::uint64_t bytes)
{
    // The toolkit writes "kB".
    return QLocale()
        .formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat)
        .replace(QLatin1String("kB"), QLatin1String("KB"));
}

QString countText(std::uint32_t count, const char* one, const char* many)
{
    return QLocale().toString(count) + u' ' + QLatin1String(count == 1 ? one : many);
}

QString clockText(std::chrono::seconds time)
{
    const auto seconds = time.count();
    const QString minutes = QStringLiteral("%1:%2").arg(seconds / 60 % 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return seconds < 3600 ? minutes : QStringLiteral("%1:%2").arg(seconds / 3600).arg(minutes, 5, QLatin1Char('0'));
}

QString durationText(RunClock::Duration time)
{
    const auto seconds = std::chrono::round<std::chrono::seconds>(time);
    if (seconds.count() >= 60)
        return clockText(seconds) + QStringLiteral(" min");
    return QStringLiteral("%1 s").arg(std::max<qint64>(seconds.count(), 1));
}

QDateTime dateOf(std::uint64_t fileTime)
{
    constexpr std::uint64_t TicksPerMillisecond = 10000;
    constexpr qint64 MillisecondsTo1970 = 11644473600000;
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(fileTime / TicksPerMillisecond) - MillisecondsTo1970);
}

// "a, b and c"
QString joined(const QStringList& parts)
{
    if (parts.size() < 2)
        return parts.value(0);
    return parts.mid(0, parts.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" and ") + parts.back();
}

QString attributesText(std::uint32_t bits)
{
    QStringList names;
    for (const auto& [bit, name] : {std::pair{FILE_ATTRIBUTE_ARCHIVE, "archive"},
                                    {FILE_ATTRIBUTE_HIDDEN, "hidden"},
                                    {FILE_ATTRIBUTE_SYSTEM, "system"},
                                    {FILE_ATTRIBUTE_READONLY, "read-only"}}) {
        if (bits & bit)
            names += QLatin1String(name);
    }
    return names.join(QStringLiteral(" or "));
}

QString extensionsText(const std::vector<std::u16string>& extensions)
{
    if (extensions.empty())
        return QStringLiteral("none, because the list of extensions is empty");
    QStringList names;
    for (const std::u16string& each : extensions)
        names += QStringLiteral("*.") + toQt(each);
    return QStringLiteral("only ") + names.join(QStringLiteral(", "));
}

QLatin1String jobText(const RunProgress& run)
{
    return QLatin1String(run.run == RunRestores ? "restore" : "backup");
}

// Describes a set by its number and storage. If the path doesn't have the usual form, describes the set by the path.
QString setText(const std::u16string& listPath, bool begins)
{
    static const QRegularExpression usual(QStringLiteral(R"(^(.*)\\QUILBOX\\QLBX0*(\d+)\.QLT$)"));
    const QRegularExpressionMatch match = usual.match(QString::fromStdU16String(listPath));
    if (!match.hasMatch())
        return toQt(listPath);
    const QString storage = match.captured(1);
    return QStringLiteral("%1 %2 on %3")
        .arg(QLatin1String(begins ? "Set" : "set"), match.captured(2),
             storage.isEmpty() ? QStringLiteral("the main device") : toQt(storage.toStdU16String()));
}

}  // namespace

QString markedText(const StatusState& status)
{
    QStringList marked;
    if (status.markedFiles != 0)
        marked +=
            countText(status.markedFiles, "file", "files") + QStringLiteral(" (%1)").arg(bytesText(status.markedBytes));
    if (status.markedDatabases != 0)
        marked += countText(status.markedDatabases, "database", "databases");
    if (status.registryMarked)
        marked += QStringLiteral("the registry");
    if (marked.isEmpty())
        return QStringLiteral("Nothing is marked");
    const bool one = status.markedFiles + status.markedDatabases + (status.registryMarked ? 1 : 0) == 1;
    QString text = joined(marked) + QLatin1String(one ? " is marked" : " are marked");
    text[0] = text[0].toUpper();
    return text;
}

QString filterText(const StatusState& status)
{
    QStringList parts;
    if (status.shownExtensions)
        parts += extensionsText(*status.shownExtensions);
    if (status.shownSince != 0)
        parts += QStringLiteral("written since ") +
                 QLocale().toString(dateOf(status.shownSince).toUTC().date(), QLocale::ShortFormat);
    if (status.hiddenAttributes != 0)
        parts += QStringLiteral("not ") + attributesText(status.hiddenAttributes);
    return parts.isEmpty() ? QString() : QStringLiteral("Files shown: ") + parts.join(QStringLiteral("; "));
}

QString newestSetText(const StatusState& status)
{
    if (status.newestSet.empty())
        return {};
    return QStringLiteral("Newest set: ") + QLocale().toString(dateOf(status.newestSetTime), QLocale::ShortFormat);
}

QString itemsText(const RunView& run)
{
    return QStringLiteral("%1 of %2")
        .arg(QLocale().toString(run.progress.itemsDone), countText(run.progress.items, "item", "items"));
}

// More bytes can be done than were expected, because files can have grown since they were listed, and the sizes of
// databases aren't known before the run. In that case the text shows the number of done bytes also in place of the
// expected number.
QString amountText(const RunView& run)
{
    const RunProgress& progress = run.progress;
    return QStringLiteral("%1 of %2")
        .arg(bytesText(progress.bytesDone), bytesText(std::max(progress.bytes, progress.bytesDone)));
}

QString timeText(const RunView& run)
{
    QString text = clockText(std::chrono::floor<std::chrono::seconds>(run.progress.time)) + QStringLiteral(" so far");
    if (run.remaining)
        text += QStringLiteral(", about %1 left").arg(clockText(*run.remaining));
    return text;
}

QString closingText(const RunView& run)
{
    return QStringLiteral("Closes when the %1 is done.").arg(jobText(run.progress));
}

QString runReason(const RunProgress& run)
{
    return QStringLiteral("A %1 is underway").arg(jobText(run));
}

QString endedText(const RunProgress& run)
{
    return QStringLiteral("The %1 is done").arg(jobText(run));
}

QString outcomeText(const RunProgress& run, std::size_t leftOut)
{
    const bool restores = run.run == RunRestores;
    QStringList made;
    if (run.made[Files] != 0)
        made += countText(run.made[Files], "file", "files");
    if (run.made[Databases] != 0)
        made += countText(run.made[Databases], "database", "databases");
    if (run.made[Registry] != 0)
        made += QStringLiteral("registry");
    if (made.isEmpty())
        made += QStringLiteral("nothing");
    if (!restores && run.bytesDone != 0)
        made += bytesText(run.bytesDone);
    QString text = (restores ? QStringLiteral("Restored from ") : QString()) + setText(run.listPath, !restores) +
                   QStringLiteral(": ") + made.join(QStringLiteral(", ")) + QStringLiteral(" in ") +
                   durationText(run.time);
    if (leftOut != 0)
        text += QStringLiteral("; ") + countText(static_cast<std::uint32_t>(leftOut), "item", "items") +
                QStringLiteral(" left out");
    return text;
}

}  // namespace platform::qt
