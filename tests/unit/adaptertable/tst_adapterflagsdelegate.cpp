#include "adapterflagsdelegate.h"

#include "flagcells.h"

#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QTableView>
#include <QToolTip>
#include <QWhatsThis>
#include <QtTest>

namespace {
const QColor ground(10, 20, 30);
const QColor unset(181, 181, 181);
const QColor colors[] = {QColor(250, 60, 20),  QColor(50, 200, 50),  QColor(50, 133, 255),
                         QColor(244, 200, 10), QColor(255, 150, 55), QColor(225, 150, 225)};
constexpr int boxCount = 6;

QFont plainFont(int pointSize = 10)
{
    QFont font;
    font.setPointSize(pointSize);
    return font;
}

/// As wide as "Auto" in the font of the boxes, with room around it.
int boxWidth(const QFont &plain)
{
    QFont font = plain;
    font.setPointSize(font.pointSize() - 1);
    font.setWeight(75);
    return QFontMetrics(font).horizontalAdvance(QStringLiteral("Auto")) + 6;
}

/// From the start of one box to that of the next, as the question for a place counts them.
int pitchOf(const QFont &plain)
{
    return QFontMetrics(plain).horizontalAdvance(QStringLiteral("Auto")) + 6;
}

QStyleOptionViewItem cellAt(const QRect &rect, const QFont &font = plainFont())
{
    QStyleOptionViewItem option;
    option.rect = rect;
    option.font = font;
    return option;
}

QRect boxAt(const QStyleOptionViewItem &cell, int number)
{
    const int width = boxWidth(cell.font);
    return {cell.rect.left() + number * width + number * 4 + 4, cell.rect.top() + 4, width, cell.rect.height() - 8};
}

QImage pictureOf(const QStyleOptionViewItem &cell, const QModelIndex &index)
{
    QImage image(600, 60, QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    AdapterFlagsDelegate().paint(&painter, cell, index);
    return image;
}

/// How many pixels of the rectangle have the colour.
int pixels(const QImage &image, const QRect &rect, const QColor &color)
{
    int count = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x)
            count += image.pixelColor(x, y) == color ? 1 : 0;
    }
    return count;
}

int area(const QRect &rect)
{
    return rect.width() * rect.height();
}

const QRect wideCell(20, 10, 500, 31);
} // namespace

class TestAdapterFlagsDelegate : public QObject
{
    Q_OBJECT

private slots:
    void eachFlagHasItsBoxAndColour_data();
    void eachFlagHasItsBoxAndColour();
    void aBoxThatIsNotSetKeepsItsWhiteLabel();
    void labelsStandInTheMiddle();
    void nothingIsPaintedBesideTheBoxes();
    void withoutAModelAllBoxesAreGrey();
    void aNarrowCellClipsItsLastBox();
    void thePainterComesBackAsItWas();
    void aFontSizedInPixelsIsTaken();
    void theHintCountsFiveBoxes_data();
    void theHintCountsFiveBoxes();
    void eachBoxExplainsItself_data();
    void eachBoxExplainsItself();
    void thePlainFontDividesTheCell();
    void gapsBelongToABox();
    void placesBesideTheBoxesSayNothing_data();
    void placesBesideTheBoxesSayNothing();
    void whatsThisListsTheFlagsThatAreSet_data();
    void whatsThisListsTheFlagsThatAreSet();
    void aToolTipShowsUnderThePointer();
    void whatsThisShowsUnderThePointer();
    void theQuestionForWhatsThisIsAccepted();
    void otherEventsAreLeftAlone();
};

void TestAdapterFlagsDelegate::eachFlagHasItsBoxAndColour_data()
{
    QTest::addColumn<int>("box");
    const char *const names[] = {"CAN FD", "listen only", "auto bus on", "error frames", "low speed", "linked"};
    for (int box = 0; box < boxCount; ++box)
        QTest::newRow(names[box]) << box;
}

void TestAdapterFlagsDelegate::eachFlagHasItsBoxAndColour()
{
    QFETCH(int, box);
    const FlagCell cell(onlyFlag(box));
    const QStyleOptionViewItem option = cellAt(wideCell);
    const QImage image = pictureOf(option, cell.index());
    for (int other = 0; other < boxCount; ++other) {
        const QColor expected = other == box ? colors[other] : unset;
        QCOMPARE(image.pixelColor(boxAt(option, other).topLeft()), expected);
        QCOMPARE(image.pixelColor(boxAt(option, other).bottomRight()), expected);
    }
}

void TestAdapterFlagsDelegate::aBoxThatIsNotSetKeepsItsWhiteLabel()
{
    const FlagCell notSet;
    const QStyleOptionViewItem option = cellAt(wideCell, plainFont(16));
    const QImage image = pictureOf(option, notSet.index());
    for (int box = 0; box < boxCount; ++box)
        QVERIFY(pixels(image, boxAt(option, box), Qt::white) > 10);
}

void TestAdapterFlagsDelegate::labelsStandInTheMiddle()
{
    const FlagCell cell;
    const QStyleOptionViewItem option = cellAt(wideCell, plainFont(16));
    const QImage image = pictureOf(option, cell.index());
    for (int box = 0; box < boxCount; ++box) {
        const QRect rect = boxAt(option, box);
        QRect label;
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            for (int x = rect.left(); x <= rect.right(); ++x) {
                if (image.pixelColor(x, y) == QColor(Qt::white))
                    label |= QRect(x, y, 1, 1);
            }
        }
        QVERIFY(qAbs(label.center().x() - rect.center().x()) <= 1);
        // Letters stand on their line, which leaves room below for those that reach under it.
        QVERIFY(qAbs(label.center().y() - rect.center().y()) <= 2);
    }
}

void TestAdapterFlagsDelegate::nothingIsPaintedBesideTheBoxes()
{
    const FlagCell cell(allFlags());
    const QStyleOptionViewItem option = cellAt(wideCell);
    const QImage image = pictureOf(option, cell.index());
    int inBoxes = 0;
    for (int box = 0; box < boxCount; ++box)
        inBoxes += area(boxAt(option, box));
    QCOMPARE(pixels(image, image.rect(), ground), area(image.rect()) - inBoxes);
}

void TestAdapterFlagsDelegate::withoutAModelAllBoxesAreGrey()
{
    const QStyleOptionViewItem option = cellAt(wideCell);
    QCOMPARE(pictureOf(option, QModelIndex()), pictureOf(option, FlagCell().index()));
}

void TestAdapterFlagsDelegate::aNarrowCellClipsItsLastBox()
{
    const FlagCell cell(allFlags());
    QStyleOptionViewItem option = cellAt(wideCell);
    option.rect.setWidth(5 * boxWidth(option.font) + 24);
    const QImage image = pictureOf(option, cell.index());
    const QRect last = boxAt(option, 5);
    QVERIFY(last.right() > option.rect.right());
    const QRect beyond(option.rect.right() + 1, 0, 100, image.height());
    QCOMPARE(pixels(image, beyond, ground), area(beyond));
}

void TestAdapterFlagsDelegate::thePainterComesBackAsItWas()
{
    QImage image(600, 60, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::red);
    const QFont font = painter.font();
    const FlagCell cell;
    AdapterFlagsDelegate().paint(&painter, cellAt(wideCell, plainFont(20)), cell.index());
    QVERIFY(painter.testRenderHint(QPainter::Antialiasing));
    QVERIFY(painter.testRenderHint(QPainter::TextAntialiasing));
    QCOMPARE(painter.pen().color(), QColor(Qt::red));
    QCOMPARE(painter.font(), font);
    QVERIFY(!painter.hasClipping());
}

void TestAdapterFlagsDelegate::aFontSizedInPixelsIsTaken()
{
    QFont font;
    font.setPixelSize(14);
    const FlagCell cell(allFlags());
    const QImage image = pictureOf(cellAt(wideCell, font), cell.index());
    QVERIFY(pixels(image, image.rect(), Qt::white) > 10);
}

void TestAdapterFlagsDelegate::theHintCountsFiveBoxes_data()
{
    QTest::addColumn<int>("pointSize");
    QTest::newRow("usual font") << 10;
    QTest::newRow("large font") << 20;
}

void TestAdapterFlagsDelegate::theHintCountsFiveBoxes()
{
    QFETCH(int, pointSize);
    const QFont font = plainFont(pointSize);
    const QSize expected(boxWidth(font) * 5 + 24, 40);
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("sizeHint.* %1$").arg(expected.width())));
    QCOMPARE(AdapterFlagsDelegate().sizeHint(cellAt(wideCell, font), QModelIndex()), expected);
}

void TestAdapterFlagsDelegate::eachBoxExplainsItself_data()
{
    QTest::addColumn<int>("box");
    QTest::addColumn<QString>("whenSet");
    QTest::addColumn<QString>("whenNotSet");

    QTest::newRow("CAN FD") << 0 << QStringLiteral("CAN FD is activated.")
                            << QStringLiteral("CAN FD is not activated.");
    QTest::newRow("listen only") << 1 << QStringLiteral("Listen only is activated.")
                                 << QStringLiteral("Listen only is not activated.");
    QTest::newRow("auto bus on") << 2 << QStringLiteral("Auto bus on is activated.")
                                 << QStringLiteral("Auto bus on is not activated.");
    QTest::newRow("error frames") << 3 << QStringLiteral("Error frames are activated.")
                                  << QStringLiteral("Error frames are not activated.");
    QTest::newRow("low speed") << 4 << QStringLiteral("Low speed is activated.")
                               << QStringLiteral("Low speed is not activated.");
    QTest::newRow("linked") << 5 << QStringLiteral("Adapter is linked with another adapter.")
                            << QStringLiteral("Adapter is not linked.");
}

void TestAdapterFlagsDelegate::eachBoxExplainsItself()
{
    QFETCH(int, box);
    QFETCH(QString, whenSet);
    QFETCH(QString, whenNotSet);
    const FlagCell set(onlyFlag(box));
    const FlagCell notSet;
    const QStyleOptionViewItem option = cellAt(wideCell);
    const QPoint place(wideCell.left() + box * pitchOf(option.font), wideCell.top());
    const AdapterFlagsDelegate delegate;
    QCOMPARE(delegate.getToolTip(option, place, set.index()), whenSet);
    QCOMPARE(delegate.getToolTip(option, place, notSet.index()), whenNotSet);
    QCOMPARE(delegate.getToolTip(option, place, QModelIndex()), whenNotSet);
}

void TestAdapterFlagsDelegate::thePlainFontDividesTheCell()
{
    const FlagCell cell;
    const QStyleOptionViewItem option = cellAt(wideCell, plainFont(20));
    const int pitch = pitchOf(option.font);
    const AdapterFlagsDelegate delegate;
    const auto textAt = [&](int x) {
        return delegate.getToolTip(option, QPoint(wideCell.left() + x, 0), cell.index());
    };
    QCOMPARE(textAt(pitch - 1), QStringLiteral("CAN FD is not activated."));
    QCOMPARE(textAt(pitch), QStringLiteral("Listen only is not activated."));
    QCOMPARE(textAt(5 * pitch - 1), QStringLiteral("Low speed is not activated."));
    QCOMPARE(textAt(5 * pitch), QStringLiteral("Adapter is not linked."));
}

void TestAdapterFlagsDelegate::gapsBelongToABox()
{
    const FlagCell cell;
    const QStyleOptionViewItem option = cellAt(wideCell);
    const QPoint gap = boxAt(option, 0).topRight() + QPoint(2, 0);
    QVERIFY(!AdapterFlagsDelegate().getToolTip(option, gap, cell.index()).isEmpty());
    QVERIFY(!AdapterFlagsDelegate().getToolTip(option, wideCell.topLeft(), cell.index()).isEmpty());
}

void TestAdapterFlagsDelegate::placesBesideTheBoxesSayNothing_data()
{
    QTest::addColumn<int>("pitches");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<bool>("isEmpty");

    QTest::newRow("the last that counts as the sixth") << 6 << -1 << false;
    QTest::newRow("behind the sixth") << 6 << 0 << true;
    QTest::newRow("far behind") << 100 << 0 << true;
    // A division that rounds towards zero.
    QTest::newRow("the first that counts as the first") << -1 << 1 << false;
    QTest::newRow("before the first") << -1 << 0 << true;
}

void TestAdapterFlagsDelegate::placesBesideTheBoxesSayNothing()
{
    QFETCH(int, pitches);
    QFETCH(int, pixels);
    QFETCH(bool, isEmpty);
    const FlagCell cell(allFlags());
    const QStyleOptionViewItem option = cellAt(wideCell);
    const int pitch = pitchOf(option.font);
    const QPoint place(wideCell.left() + pitches * pitch + pixels, wideCell.top());
    QCOMPARE(AdapterFlagsDelegate().getToolTip(option, place, cell.index()).isEmpty(), isEmpty);
}

void TestAdapterFlagsDelegate::whatsThisListsTheFlagsThatAreSet_data()
{
    QTest::addColumn<AdapterFlags>("flags");
    QTest::addColumn<QString>("text");

    QTest::newRow("none") << AdapterFlags() << QStringLiteral("No special flags activated.");
    QTest::newRow("CAN FD") << onlyFlag(0) << QStringLiteral("CAN FD is activated");
    QTest::newRow("linked") << onlyFlag(5) << QStringLiteral("Adapter is linked");
    QTest::newRow("all") << allFlags()
                         << QStringLiteral("Auto bus on is set\nError frames are activated\nCAN FD is activated\n"
                                           "Listen only is activated\nLow speed is activated\nAdapter is linked");
}

void TestAdapterFlagsDelegate::whatsThisListsTheFlagsThatAreSet()
{
    QFETCH(AdapterFlags, flags);
    QFETCH(QString, text);
    const FlagCell cell(flags);
    QCOMPARE(AdapterFlagsDelegate().getWhatsThis(cell.index()), text);
}

void TestAdapterFlagsDelegate::aToolTipShowsUnderThePointer()
{
    FlagCell cell(onlyFlag(0));
    QTableView view;
    view.setModel(cell.model());
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const QStyleOptionViewItem option = cellAt(wideCell);
    const QPoint place = boxAt(option, 0).center();
    QHelpEvent event(QEvent::ToolTip, place, view.viewport()->mapToGlobal(place));
    QVERIFY(AdapterFlagsDelegate().helpEvent(&event, &view, option, cell.index()));
    QCOMPARE(QToolTip::text(), QStringLiteral("CAN FD is activated."));
    QToolTip::hideText();
}

void TestAdapterFlagsDelegate::whatsThisShowsUnderThePointer()
{
    FlagCell cell(onlyFlag(0));
    QTableView view;
    view.setModel(cell.model());
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const int windows = QApplication::topLevelWidgets().count();
    const QPoint place(10, 10);
    QHelpEvent event(QEvent::WhatsThis, place, view.viewport()->mapToGlobal(place));
    QVERIFY(AdapterFlagsDelegate().helpEvent(&event, &view, cellAt(wideCell), cell.index()));
    QCOMPARE(QApplication::topLevelWidgets().count(), windows + 1);
    QWhatsThis::hideText();
}

void TestAdapterFlagsDelegate::theQuestionForWhatsThisIsAccepted()
{
    const FlagCell cell;
    QHelpEvent event(QEvent::QueryWhatsThis, QPoint(), QPoint());
    event.ignore();
    QVERIFY(AdapterFlagsDelegate().helpEvent(&event, nullptr, cellAt(wideCell), cell.index()));
    QVERIFY(event.isAccepted());
}

void TestAdapterFlagsDelegate::otherEventsAreLeftAlone()
{
    const FlagCell cell;
    QHelpEvent event(QEvent::MouseMove, QPoint(), QPoint());
    QVERIFY(!AdapterFlagsDelegate().helpEvent(&event, nullptr, cellAt(wideCell), cell.index()));
}

QTEST_MAIN(TestAdapterFlagsDelegate)
#include "tst_adapterflagsdelegate.moc"
