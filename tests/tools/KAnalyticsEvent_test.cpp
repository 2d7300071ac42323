#include "analytics/KAnalyticsEvent.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QtTest>

class tst_KAnalyticsEvent : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void toJson_data();
    void toJson();
    void fromJson_data();
    void fromJson();
    void clonedTimer();
    void timer();
};

void tst_KAnalyticsEvent::toJson_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, int type, const QVariant &value, const char *typeText,
                        const char *valueText) {
        QTest::newRow(name) << type << value
                            << QByteArray("{\"category\":\"c\",\"name\":\"n\",\"timestamp\":1700000000123,\"type\":\"")
                + typeText + "\",\"value\":" + valueText + "}";
    };
    row("action with text", 0, QStringLiteral("a \"b\" \u00e9"), "action", "\"a \\\"b\\\" \xc3\xa9\"");
    row("duration", 1, qint64(1500), "duration", "1500");
    row("counter below 0", 2, -3, "counter", "-3");
    row("no value", 2, QVariant(), "counter", "null");
    row("no such type", 7, true, "unknow", "true");
    row("negative type", -1, 0.5, "unknow", "0.5");
}

void tst_KAnalyticsEvent::toJson()
{
    QFETCH(int, type);
    QFETCH(QVariant, value);
    QFETCH(QByteArray, text);
    KAnalyticsEvent event(nullptr);
    event.setName(QStringLiteral("n"));
    event.setCategory(QStringLiteral("c"));
    event.setTimestamp(1700000000123);
    event.setType(KAnalyticsEvent::EventType(type));
    event.setValue(value);
    QCOMPARE(event.toJson().toUtf8(), text);

    KAnalyticsEvent back(nullptr);
    back.fromJson(QString::fromUtf8(text));
    QCOMPARE(back.timestamp(), qint64(1700000000123));
    QCOMPARE(back.name(), event.name());
    QCOMPARE(int(back.type()), type >= 0 && type <= 2 ? type : 0);
    QCOMPARE(back.value(), QJsonValue::fromVariant(value).toVariant());
}

void tst_KAnalyticsEvent::fromJson_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<qint64>("timestamp");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("type");
    const QString before = QStringLiteral("before"), none;
    QTest::newRow("no JSON: as before") << QStringLiteral("not json") << qint64(5) << before << 2;
    QTest::newRow("empty text: as before") << QString() << qint64(5) << before << 2;
    QTest::newRow("keys missing") << QStringLiteral("{}") << qint64(0) << none << 0;
    QTest::newRow("list") << QStringLiteral("[1]") << qint64(0) << none << 0;
    QTest::newRow("wrong kinds") << QStringLiteral(R"({"timestamp":"soon","name":7,"type":["duration"]})") << qint64(0)
                                 << none << 0;
    QTest::newRow("number as text") << QStringLiteral(R"({"timestamp":"77"})") << qint64(77) << none << 0;
    QTest::newRow("more than 32 bits") << QStringLiteral(R"({"timestamp":1700000000123,"type":"duration"})")
                                       << qint64(1700000000123) << none << 1;
    QTest::newRow("case counts") << QStringLiteral(R"({"type":"Duration"})") << qint64(0) << none << 0;
}

void tst_KAnalyticsEvent::fromJson()
{
    QFETCH(QString, json);
    KAnalyticsEvent event(nullptr);
    event.setTimestamp(5);
    event.setName(QStringLiteral("before"));
    event.setType(KAnalyticsEvent::EventCounter);
    event.fromJson(json);
    QTEST(event.timestamp(), "timestamp");
    QTEST(event.name(), "name");
    QTEST(int(event.type()), "type");
}

void tst_KAnalyticsEvent::clonedTimer()
{
    KAnalyticsEventTimer timer(nullptr);
    timer.setTimestamp(11);
    timer.setName(QStringLiteral("n"));
    timer.setCategory(QStringLiteral("c"));
    timer.setValue(5);
    const std::unique_ptr<KAnalyticsEvent> copy(timer.clone());
    QCOMPARE(copy->toJson(), timer.toJson());
    QCOMPARE(copy->metaObject(), &KAnalyticsEvent::staticMetaObject); // the plain class
    QCOMPARE(copy->parent(), nullptr);
}

void tst_KAnalyticsEvent::timer()
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    KAnalyticsEventTimer timer(nullptr);
    QVERIFY(timer.timestamp() >= before && timer.timestamp() <= QDateTime::currentMSecsSinceEpoch());
    QCOMPARE(timer.type(), KAnalyticsEvent::EventDuration);
    timer.setTimestamp(1);
    timer.start();
    QCOMPARE(timer.value(), QVariant(0));
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 3) { }
    timer.stop();
    QCOMPARE(int(timer.value().type()), int(QVariant::LongLong));
    QVERIFY(timer.value().toLongLong() >= 3);
    QCOMPARE(timer.timestamp(), qint64(1));
    timer.start();
    QCOMPARE(timer.value(), QVariant(0));
}

QTEST_GUILESS_MAIN(tst_KAnalyticsEvent)
#include "KAnalyticsEvent_test.moc"
