// Every field of every application in the table, cell by cell: what can be done there, and how.
#include "desktop/matrix/FieldMatrix.h"
#include "support/desktop/DesktopTest.h"

namespace veltrin {
namespace {

class MatrixEnvironment : public testing::Environment {
public:
    void TearDown() override { MatrixWorld::end(); }
};

/// The page for people, made of what the cells before it found.
class ApplicationsPage : public testing::Test {
public:
    void TestBody() override {
        if (MatrixTable::isRecording()) {
            MatrixTable::shared().record();
        } else {
            EXPECT_EQ(MatrixTable::committedDocument(), MatrixTable::shared().document())
                << "docs/applications.md does not tell what was found; see there how to write it anew";
        }
    }
};

bool registerTests() {
    testing::AddGlobalTestEnvironment(new MatrixEnvironment);
    for (const MatrixRow& row : MatrixTable::shared().rows()) {
        for (const FieldMatrix::Cell& cell : FieldMatrix::cells()) {
            QString suite = QStringLiteral("Matrix_") + row.application;
            suite.replace(u'-', u'_');
            const QString name = row.field + QStringLiteral("_") + QString::fromLatin1(cell.name);
            testing::RegisterTest(qPrintable(suite), qPrintable(name), nullptr, nullptr, __FILE__, __LINE__,
                                  [&row, &cell]() -> FieldMatrix* { return new FieldMatrix(row, cell); });
        }
    }
    testing::RegisterTest("MatrixPage", "tellsWhatWasFound", nullptr, nullptr, __FILE__, __LINE__,
                          []() -> ApplicationsPage* { return new ApplicationsPage; });
    return true;
}

[[maybe_unused]] const bool areRegistered = registerTests();

}  // namespace
}  // namespace veltrin
