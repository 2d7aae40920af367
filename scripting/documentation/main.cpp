// Gathers what the headers tell of classes and their operations, for help() in scripts:
//     runebook-header-docs OUTPUT.json HEADER...

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// Reads one header line by line: a comment of three slashes belongs to the declaration below it, and the
/// words behind "public:" to those in the group that have no comment of their own.
class HeaderReader
{
public:
    explicit HeaderReader(QJsonObject &classes) : m_classes(classes) { }

    void take(const QString &rawLine)
    {
        const QString line = rawLine.trimmed();
        if (line.startsWith("///"_L1) && !line.startsWith("///<"_L1)) {
            m_comment << line.mid(3).trimmed();
            return;
        }
        static const QRegularExpression group(
            u"^(?:public|protected|private|Q_SIGNALS)[^:]*:(?: // (.*))?$"_s);
        if (const auto match = group.match(line); match.hasMatch()) {
            m_group = match.captured(1);
            m_comment.clear();
            return;
        }
        if (line.isEmpty() || line.startsWith("//"_L1) || line.startsWith(u'#')) {
            m_comment.clear();
            return;
        }
        m_declaration += u' ' + line.section(u"//"_s, 0, 0).trimmed();
        static const QRegularExpression macro(u"^Q_[A-Z_]+(\\(.*\\))?$"_s);
        const bool isMacro = macro.match(m_declaration.trimmed()).hasMatch();
        if (isMacro || m_declaration.contains(u';') || m_declaration.contains(u'{')
            || m_declaration.contains(u'}'))
            finishDeclaration();
    }

private:
    void finishDeclaration()
    {
        const QString text = std::exchange(m_declaration, {}).trimmed();
        static const QRegularExpression type(u"^(?:template <[^>]*> )?(?:class|struct) (\\w+)[^;]*\\{"_s);
        static const QRegularExpression property(u"^Q_PROPERTY\\(.*?(\\w+) (?:READ (\\w+)|MEMBER)"_s);
        static const QRegularExpression function(u"(\\w+)\\("_s);
        const int depth = m_depth;
        m_depth += static_cast<int>(text.count(u'{') - text.count(u'}'));
        if (const auto match = type.match(text); match.hasMatch()) {
            m_names.append({match.captured(1), depth});
            note(QString(), true);
        } else if (const auto found = property.match(text); found.hasMatch()) {
            note(found.captured(1), true);
            if (!found.captured(2).isEmpty() && found.captured(2) != found.captured(1))
                m_readers.append({found.captured(1), found.captured(2)});
        } else if (!m_names.isEmpty()) {
            QString head = text;
            head.remove(u"Q_INVOKABLE "_s);
            if (const auto called = function.match(head); called.hasMatch()) {
                note(called.captured(1), false);
                if (head.startsWith("static "_L1))
                    noteStatic(called.captured(1));
            }
        }
        m_comment.clear();
        while (!m_names.isEmpty() && m_depth <= m_names.last().second) {
            followReaders();
            m_names.removeLast();
        }
    }

    /// The first comment of a name stays: overloads follow the function that they vary.
    void note(const QString &name, bool isCommentNeeded)
    {
        QString words = m_comment.join(u' ').replace(u"\\a "_s, QString()).simplified();
        if (words.isEmpty() && !isCommentNeeded && !m_group.isEmpty())
            words = m_group.at(0).toUpper() + m_group.mid(1) + u'.';
        if (words.isEmpty() || m_names.isEmpty())
            return;
        QJsonObject known = m_classes[m_names.last().first].toObject();
        if (!known.contains(name))
            known[name] = words;
        m_classes[m_names.last().first] = known;
    }

    /// Operations of the class itself are told apart by a blank, which no name has.
    void noteStatic(const QString &name)
    {
        QJsonObject known = m_classes[m_names.last().first].toObject();
        known[u"static "_s + name] = true;
        m_classes[m_names.last().first] = known;
    }

    void followReaders()
    {
        QJsonObject known = m_classes[m_names.last().first].toObject();
        for (const auto &[name, reader] : std::exchange(m_readers, {})) {
            if (!known.contains(name) && known.contains(reader))
                known[name] = known[reader];
        }
        m_classes[m_names.last().first] = known;
    }

    QJsonObject &m_classes;
    QStringList m_comment;
    QString m_group;
    QString m_declaration;
    QList<std::pair<QString, int>> m_names; ///< the classes around, and how deep they stand
    QList<std::pair<QString, QString>> m_readers; ///< properties and what reads them
    int m_depth = 0;
};

} // namespace

int main(int count, char *arguments[])
{
    QJsonObject classes;
    for (int i = 2; i < count; ++i) {
        QFile header(QString::fromLocal8Bit(arguments[i]));
        if (!header.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "%s cannot be read\n", arguments[i]);
            return 1;
        }
        HeaderReader reader(classes);
        for (const QString &line : QString::fromUtf8(header.readAll()).split(u'\n'))
            reader.take(line);
    }
    QFile output(QString::fromLocal8Bit(count > 1 ? arguments[1] : ""));
    if (!output.open(QIODevice::WriteOnly) || output.write(QJsonDocument(classes).toJson()) < 0) {
        std::fprintf(stderr, "the documentation cannot be written\n");
        return 1;
    }
    return 0;
}
