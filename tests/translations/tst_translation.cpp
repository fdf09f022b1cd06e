// The English translation of the panel and the application: every text has one that keeps the
// placeholders the program fills in, and the translation file holds exactly the texts the
// sources hold now, so that no text added or changed later stays German in an English window.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

namespace {

struct Message {
    QString context;
    QString source;
    QString comment;  // tells apart one text used in two senses
    QString translation;
    QString type;  // "unfinished", "vanished", "obsolete" or empty

    QString key() const { return context + u'\x1f' + source + u'\x1f' + comment; }
    QString shown() const {
        return QStringLiteral("[%1] \"%2\"%3")
            .arg(context, source, comment.isEmpty() ? QString() : " (" + comment + ")");
    }
};

QList<Message> readTranslations(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) qFatal("cannot read %s", qPrintable(path));
    QList<Message> messages;
    QXmlStreamReader xml(&file);
    QString context;
    Message message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement() && xml.name() == u"message") messages.append(message);
        if (!xml.isStartElement()) continue;
        if (xml.name() == u"name") {
            context = xml.readElementText();
        } else if (xml.name() == u"message") {
            message = Message{context, {}, {}, {}, {}};
        } else if (xml.name() == u"source") {
            message.source = xml.readElementText();
        } else if (xml.name() == u"comment") {
            message.comment = xml.readElementText();
        } else if (xml.name() == u"translation") {
            message.type = xml.attributes().value(QStringLiteral("type")).toString();
            message.translation = xml.readElementText();
        }
    }
    if (xml.hasError()) qFatal("%s: %s", qPrintable(path), qPrintable(xml.errorString()));
    return messages;
}

// The placeholders (%1, %2, …) a text holds, each once, in order.
QStringList placeholders(const QString& text) {
    QStringList found;
    for (const QRegularExpressionMatch& match :
         QRegularExpression(QStringLiteral("%\\d+")).globalMatch(text))
        if (!found.contains(match.captured())) found.append(match.captured());
    found.sort();
    return found;
}

}  // namespace

class TestTranslation : public QObject {
    Q_OBJECT

private slots:
    void everyTextIsTranslatedWithItsPlaceholders() {
        const QList<Message> messages = readTranslations(QStringLiteral(TS_FILE));
        QVERIFY(messages.size() > 300);
        QStringList faults;
        for (const Message& m : messages) {
            if (!m.type.isEmpty() || m.translation.trimmed().isEmpty())
                faults << m.shown() + ": not translated (" + m.type + ")";
            else if (placeholders(m.translation) != placeholders(m.source))
                faults << m.shown() + ": the placeholders differ in \"" + m.translation + "\"";
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
    }

    // lupdate run over the sources into a copy of the file finds nothing new and nothing gone.
    void theTranslationHoldsTheTextsTheSourcesHold() {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString copy = dir.filePath(QStringLiteral("quendrix_en.ts"));
        QVERIFY(QFile::copy(QStringLiteral(TS_FILE), copy));
        const QDir sources(QStringLiteral(SOURCE_DIR));
        QStringList arguments{QStringLiteral("-silent"), QStringLiteral("-locations"),
                              QStringLiteral("none"), QStringLiteral("-no-obsolete")};
        for (const char* folder : {"include", "src", "app"})
            arguments << QStringLiteral("-I") << sources.filePath(QLatin1String(folder));
        for (const char* folder : {"include", "src", "app"})
            arguments << sources.filePath(QLatin1String(folder));
        arguments << QStringLiteral("-ts") << copy;
        QProcess lupdate;
        lupdate.setProcessChannelMode(QProcess::MergedChannels);
        lupdate.start(QStringLiteral(LUPDATE), arguments);
        QVERIFY(lupdate.waitForFinished(120000));
        QVERIFY2(lupdate.exitStatus() == QProcess::NormalExit && lupdate.exitCode() == 0,
                 lupdate.readAll().constData());

        QHash<QString, Message> committed, current;
        for (const Message& m : readTranslations(QStringLiteral(TS_FILE)))
            committed.insert(m.key(), m);
        for (const Message& m : readTranslations(copy))
            current.insert(m.key(), m);
        QStringList faults;
        for (const Message& m : std::as_const(current))
            if (!committed.contains(m.key()))
                faults << m.shown() + ": in the sources, not in the translation";
        for (const Message& m : std::as_const(committed))
            if (!current.contains(m.key()))
                faults << m.shown() + ": in the translation, no longer in the sources";
        QVERIFY2(
            faults.isEmpty(),
            qPrintable(faults.join('\n') +
                       "\n(cmake --build build --target update_translations, then translate)"));
    }
};

QTEST_GUILESS_MAIN(TestTranslation)
#include "tst_translation.moc"
