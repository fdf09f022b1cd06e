#include "settings/mapping.h"
#include "settings/quicksort.h"
#include "settings/variantcompare.h"

#include "support/errors.h"

#include <QtTest>
#include <initializer_list>

using namespace quendrix;

namespace {

// A table with fields from `lower1` and one record per row of `rows`, from record `lower2`.
DoubleTable makeTable(int lower1, int lower2,
                      std::initializer_list<std::initializer_list<double>> rows) {
    const int fields = int(rows.begin()->size());
    DoubleTable table(lower1, lower1 + fields - 1, lower2, lower2 + int(rows.size()) - 1);
    int j = lower2;
    for (const auto& row : rows) {
        int i = lower1;
        for (double cell : row)
            table(i++, j) = cell;
        ++j;
    }
    return table;
}

QList<double> field(const DoubleTable& table, int i) {
    QList<double> values;
    for (int j = table.lbound(2); j <= table.ubound(2); ++j)
        values << table(i, j);
    return values;
}

}  // namespace

class UtilitiesTest : public QObject {
    Q_OBJECT

private slots:
    void mapRangeValuesAndErrors() {
        QCOMPARE(mapRange(5, 0, 10, 0, 100), 50.0f);
        QCOMPARE(mapRange(5, 0, 10, 10, 20), 2.5f);  // out_min goes into the divisor
        QCOMPARE(errorOf([] { mapRange(1, 0, 10, -10, 0); }), 11);
        QCOMPARE(errorOf([] { mapRange(100000, 0, 10, 0, 100000); }), 6);  // product
        QCOMPARE(errorOf([] { mapRange(0, 0, 2147483647, 1, 2); }), 6);    // divisor sum
        QCOMPARE(errorOf([] { mapRange(1, -2147483647, 0, 0, 1); }), 6);   // x - in_min
    }

    void sortMovesWholeRecords() {
        // Keys with repeats; the second field follows the key, the third tags the record.
        const QList<double> keys{5, 2, 9, 2, 7, 5, 1, 2};
        DoubleTable table(0, 2, 0, 7);
        for (int j = 0; j <= 7; ++j) {
            table(0, j) = keys[j];
            table(1, j) = keys[j] * 10;
            table(2, j) = j;
        }
        quickSortRows(table, 0);
        QCOMPARE(field(table, 0), (QList<double>{1, 2, 2, 2, 5, 5, 7, 9}));
        for (int j = 0; j <= 7; ++j)
            QCOMPARE(table(1, j), table(0, j) * 10);
        quickSortRows(table, 2);
        QCOMPARE(field(table, 2), (QList<double>{0, 1, 2, 3, 4, 5, 6, 7}));
        QCOMPARE(field(table, 0), keys);

        // One record, or a range of one, stays as it is; a range leaves the rest alone.
        DoubleTable small = makeTable(0, 0, {{3, 0}, {2, 1}, {1, 2}});
        const DoubleTable unsorted = small;
        quickSortRows(small, 0, 1, 1);
        QCOMPARE(small, unsorted);
        quickSortRows(small, 0, 1, 2);
        QCOMPARE(field(small, 0), (QList<double>{3, 1, 2}));
    }

    void pivotIndexRoundsHalfToEven() {
        // Equal keys end up in an order that depends on the pivot record, so the tags show
        // which one was taken: records 0..3 pivot on 2 (not 1), records 1..4 on 2 (not 3).
        DoubleTable table = makeTable(0, 0, {{2, 0}, {1, 1}, {2, 2}, {1, 3}});
        quickSortRows(table, 0);
        QCOMPARE(field(table, 1), (QList<double>{1, 3, 2, 0}));

        DoubleTable fromOne = makeTable(0, 1, {{2, 0}, {1, 1}, {2, 2}, {1, 3}});
        quickSortRows(fromOne, 0);
        QCOMPARE(field(fromOne, 1), (QList<double>{3, 1, 0, 2}));
    }

    void fieldMovesOnWithLowerBoundOne() {
        // Two records need no recursion: sorted by the first field.
        DoubleTable two = makeTable(1, 0, {{2, 1}, {1, 2}});
        quickSortRows(two, 0);
        QCOMPARE(field(two, 1), (QList<double>{1, 2}));

        // The first level puts 3 last; the records before it are then ordered by field 2.
        DoubleTable three = makeTable(1, 0, {{1, 2}, {3, 3}, {2, 1}});
        quickSortRows(three, 0);
        QCOMPARE(field(three, 1), (QList<double>{2, 1, 3}));
        QCOMPARE(field(three, 2), (QList<double>{1, 2, 3}));

        // Sixteen records recurse four levels deep, one more than there are fields.
        DoubleTable deep(1, 3, 0, 15);
        for (int j = 0; j <= 15; ++j)
            deep(1, j) = 16 - j;
        QCOMPARE(errorOf([&] { quickSortRows(deep, 0); }), 9);
    }

    void sortVariantTable() {
        const QVariantList keys{"b", 3, "a", 1.5, true, "B", 10, "10", 2.5f};
        VariantTable table(0, 1, 0, int(keys.size()) - 1);
        for (int j = 0; j < keys.size(); ++j) {
            table(0, j) = keys[j];
            table(1, j) = j;
        }
        quickSortRows(table, 0);
        QVariantList sorted;
        for (int j = 0; j < keys.size(); ++j) {
            sorted << table(0, j);
            QCOMPARE(table(0, j), keys[table(1, j).toInt()]);
        }
        QCOMPARE(sorted, (QVariantList{true, 1.5, 2.5f, 3, 10, "10", "B", "a", "b"}));
    }

    void compareVariants() {
        const struct {
            QVariant a;
            QVariant b;
            int expected;
        } cases[] = {
            {1, 2.5, -1},
            {1.5f, 1.5, 0},
            {true, -1, 0},  // True is -1
            {qint64(9007199254740993LL), qint64(9007199254740992LL), 1},
            {quint64(-1), -1, 1},
            {"a", "B", 1},  // binary, case-sensitive
            {QString::fromUtf16(u"\U0001F600"), QString::fromUtf16(u"\uFF21"), -1},  // code units
            {1e9, "0", -1},  // a number before any text
            {QVariant(), 0, 0},
            {QVariant(), -0.5, 1},
            {QVariant(), "", 0},
            {QVariant(), "a", -1},
            {QVariant(), QVariant(), 0},
        };
        for (const auto& c : cases) {
            QCOMPARE(qBound(-1, variantCompare(c.a, c.b), 1), c.expected);
            QCOMPARE(qBound(-1, variantCompare(c.b, c.a), 1), -c.expected);
        }
    }
};

QTEST_MAIN(UtilitiesTest)
#include "tst_utilities.moc"
