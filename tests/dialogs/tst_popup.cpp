#include "app/PopUp.h"

#include <QtTest>

class tst_PopUp : public QObject {
    Q_OBJECT

private slots:
    void textResizesTheBox() {
        PopUp popup;
        popup.setPopupText(QStringLiteral("Ok"));
        const int narrow = popup.width();
        popup.setPopupText(QStringLiteral("Конфигурация прибора успешно записана в прибор"));
        QCOMPARE(popup.text(), QStringLiteral("Конфигурация прибора успешно записана в прибор"));
        QVERIFY(popup.width() > narrow);
    }

    void fadesInHoldsAndFadesOut_data() {
        QTest::addColumn<int>("fadeIn");
        QTest::addColumn<int>("hold");
        QTest::addColumn<int>("fadeOut");
        QTest::newRow("short") << 10 << 200 << 10;
        QTest::newRow("slow fade") << 5 << 150 << 100;
    }

    void fadesInHoldsAndFadesOut() {
        QFETCH(int, fadeIn);
        QFETCH(int, hold);
        QFETCH(int, fadeOut);
        PopUp popup;
        popup.setTimings({fadeIn, hold, fadeOut});
        popup.setPopupText(QStringLiteral("Настройки записаны"));
        popup.setPopupOpacity(0.7f);

        QElapsedTimer clock;
        clock.start();
        popup.show();
        QVERIFY(popup.isVisible());
        QVERIFY(popup.getPopupOpacity() < 0.7f);
        auto *animation = popup.findChild<QPropertyAnimation *>();
        QCOMPARE(animation->duration(), fadeIn);

        struct Step {
            qint64 at;
            float opacity;
            bool visible;
            int nextDuration;
        };
        QVector<Step> steps;
        connect(animation, &QAbstractAnimation::finished, &popup, [&] {
            steps.append(
                {clock.elapsed(), popup.getPopupOpacity(), popup.isVisible(), animation->duration()});
        });
        QTRY_VERIFY(!popup.isVisible());

        QCOMPARE(steps.size(), 2);
        // Faded in: fully opaque and still shown, the hold time not yet over.
        QCOMPARE(steps[0].opacity, 1.0f);
        QVERIFY(steps[0].visible);
        QVERIFY(steps[0].at >= fadeIn);
        // Faded out after the hold time: transparent and hidden.
        QCOMPARE(steps[1].opacity, 0.0f);
        QVERIFY(!steps[1].visible);
        QCOMPARE(steps[1].nextDuration, fadeOut);
        // Coarse timers may fire up to 5 % early.
        QVERIFY(steps[1].at >= (hold + fadeOut) * 19 / 20);
    }

    void showingAgainRestartsTheFade() {
        PopUp popup;
        popup.setTimings({5, 30, 5});
        popup.show();
        QTRY_VERIFY(!popup.isVisible());
        popup.show();
        QVERIFY(popup.isVisible());
        QVERIFY(!popup.isFadingOut());
        QTRY_COMPARE(popup.getPopupOpacity(), 1.0f);
        QTRY_VERIFY(!popup.isVisible());
    }
};

QTEST_MAIN(tst_PopUp)
#include "tst_popup.moc"
