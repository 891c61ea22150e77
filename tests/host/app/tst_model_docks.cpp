#include "animation/KVXAnimation.h"
#include "host/app/KvxElementProperties.h"
#include "host/app/KvxModelTree.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfEdInformation.h"

#include "tests/support/QtPrinters.h"

#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>
#include <QTreeView>

#include <gtest/gtest.h>

Q_DECLARE_METATYPE(std::vector<PfDbHandle>)

namespace {

struct Recorded : PfEdInformationSink {
    void Show(const QString&, const QString& text) override { texts << text; }
    QStringList texts;
};

struct Part {
    const wchar_t* name;
    const char* type;
    const char* storey;
    const char* elevation;
    const char* globalId;
};

// Storeys listed out of order, with names that sort wrongly as plain text.
const Part kParts[] = {
    {L"墙 10", "IfcWall", "10层", "28800", "3vB2YO$MX4xv5uCqZZG05x"},
    {L"墙 9", "IfcWall", "10层", "28800", ""},
    {L"板 1", "IfcSlab", "2层", "3200", ""},
    {L"柱 A", "IfcColumn", "地下一层", "-3600", ""},
    {L"场地", "", "", "", ""},
};

class ModelDocks : public ::testing::Test {
protected:
    void SetUp() override
    {
        qRegisterMetaType<std::vector<PfDbHandle>>();
        for (const Part& part : kParts)
            handles.push_back(add(part));
        // A record lives in the model space too, but is no part of the model.
        database.GetModelSpace()->Add(
            new KVXAnimation(1, handles[0], KVXAnimation::Construction, KVXAnimation::BottomUp));
        tree.SetDatabase(&database);
    }
    PfDbHandle add(const Part& part)
    {
        auto* element = new KVX3DElementObject();
        element->SetName(part.name);
        element->SetProperty(PfDbElement::kTypeProperty, QString::fromUtf8(part.type));
        element->SetProperty(PfDbElement::kStoreyProperty, QString::fromUtf8(part.storey));
        element->SetProperty(PfDbElement::kElevationProperty, QString::fromUtf8(part.elevation));
        element->SetProperty(PfDbElement::kGlobalIdProperty, QString::fromUtf8(part.globalId));
        element->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {1000, 2000, 3000}));
        database.GetModelSpace()->Add(element);
        return element->GetHandle();
    }
    QStringList rows(const QModelIndex& parent = QModelIndex()) const
    {
        QStringList texts;
        const QAbstractItemModel* model = tree.Tree()->model();
        for (int row = 0; row < model->rowCount(parent); ++row)
            texts << model->index(row, 0, parent).data().toString();
        return texts;
    }
    QModelIndex top(int row) const { return tree.Tree()->model()->index(row, 0); }

    PfDbDatabase database;
    KvxModelTree tree;
    std::vector<PfDbHandle> handles;
};

TEST_F(ModelDocks, treeListsStoreysFromTheLowestThenTypesThenNames)
{
    EXPECT_EQ(rows(), (QStringList{"地下一层 (1)", "2层 (1)", "10层 (2)", "无楼层 (1)"}));
    EXPECT_EQ(rows(top(2)), QStringList{"IfcWall (2)"});
    EXPECT_EQ(rows(tree.Tree()->model()->index(0, 0, top(2))), (QStringList{"墙 9", "墙 10"}));
    // An element without a type is grouped by what it is.
    EXPECT_EQ(rows(top(3)), QStringList{"三维构件 (1)"});
}

TEST_F(ModelDocks, searchKeepsMatchingElementsWithTheirGroups)
{
    const struct {
        const char* text;
        QStringList storeys;
    } cases[] = {
        {"墙", {"10层 (2)"}},
        {"ifcslab", {"2层 (1)"}},
        {"3vB2YO", {"10层 (2)"}},
        {"地下", {"地下一层 (1)"}},
        {"没有这个", {}},
        {"", {"地下一层 (1)", "2层 (1)", "10层 (2)", "无楼层 (1)"}},
    };
    for (const auto& c : cases) {
        tree.SetSearchText(QString::fromUtf8(c.text));
        EXPECT_EQ(rows(), c.storeys) << c.text;
    }
    tree.SetSearchText(QStringLiteral("墙 1"));
    EXPECT_EQ(rows(tree.Tree()->model()->index(0, 0, top(0))), QStringList{"墙 10"});
}

TEST_F(ModelDocks, selectingAGroupPicksTheElementsShownUnderIt)
{
    QSignalSpy picked(&tree, &KvxModelTree::SelectionPicked);
    tree.Tree()->selectionModel()->select(top(2), QItemSelectionModel::ClearAndSelect);
    ASSERT_EQ(picked.count(), 1);
    EXPECT_EQ(picked.takeFirst().at(0).value<std::vector<PfDbHandle>>(),
              (std::vector<PfDbHandle>{handles[1], handles[0]}));

    tree.SetSearchText(QStringLiteral("墙 10"));
    tree.Tree()->selectionModel()->select(tree.Tree()->model()->index(0, 0, top(0)),
                                          QItemSelectionModel::ClearAndSelect);
    ASSERT_EQ(picked.count(), 1);
    EXPECT_EQ(picked.takeLast().at(0).value<std::vector<PfDbHandle>>(), std::vector<PfDbHandle>{handles[0]});

    // The selection shown from elsewhere is not answered back.
    tree.SetSearchText(QString());
    picked.clear();
    tree.ShowSelection({handles[2], handles[4]});
    EXPECT_EQ(picked.count(), 0);
    EXPECT_EQ(tree.Tree()->selectionModel()->selectedRows().size(), 2);
    EXPECT_EQ(tree.HandleAt(tree.Tree()->selectionModel()->selectedRows().front()), handles[2]);
}

TEST_F(ModelDocks, treeFollowsAdditionsUndoAndTheDatabaseGoing)
{
    PfDbTransactionManager* steps = database.TransactionManager();
    steps->StartTransaction();
    const PfDbHandle added = add({L"墙 11", "IfcWall", "10层", "28800", ""});
    steps->EndTransaction();
    QCoreApplication::processEvents();
    EXPECT_TRUE(tree.IndexOf(added).isValid());
    EXPECT_EQ(rows()[2], QStringLiteral("10层 (3)"));

    steps->Undo();
    QCoreApplication::processEvents();
    EXPECT_FALSE(tree.IndexOf(added).isValid());

    {
        PfDbDatabase passing;
        tree.SetDatabase(&passing);
    }
    EXPECT_EQ(tree.Tree()->model()->rowCount(), 0);
}

TEST_F(ModelDocks, elementPropertiesSurviveSavingAndAnEmptyValueRemovesOne)
{
    auto* element = KVX3DElementObject::Cast(database.OpenObject(handles[0]));
    element->SetProperty(QStringLiteral("防火等级"), QStringLiteral("一级"));
    element->SetProperty(PfDbElement::kTypeProperty, QStringLiteral("IfcWallStandardCase"));
    element->SetProperty(PfDbElement::kGlobalIdProperty, QString());
    KVXSaveLoadXml xml;
    element->Save(xml);
    KVX3DElementObject copy;
    copy.Load(xml);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
    EXPECT_EQ(copy.GetProperties(), (PfDbElement::Properties{{"Type", "IfcWallStandardCase"},
                                                              {"Storey", "10层"},
                                                              {"Elevation", "28800"},
                                                              {"防火等级", "一级"}}));

    // A damaged count reads no properties rather than running away.
    KVXSaveLoadXml damaged;
    damaged.setInt(QStringLiteral("PropertyCount"), 2000000000);
    copy.Load(damaged);
    EXPECT_TRUE(copy.GetProperties().empty());
}

class ElementPropertiesEditing : public ModelDocks {
protected:
    void SetUp() override
    {
        ModelDocks::SetUp();
        previous = PfEdInformationSink::Install(&messages);
        properties.ShowElements(&database, {handles[0]});
    }
    void TearDown() override { PfEdInformationSink::Install(previous); }
    void type(const QString& label, const QString& text)
    {
        const int row = properties.RowOf(label);
        ASSERT_GE(row, 0) << label.toStdString();
        properties.Table()->item(row, 1)->setText(text);
        QCoreApplication::processEvents();
    }
    QString shown(const QString& label) const
    {
        const int row = properties.RowOf(label);
        return row < 0 ? QString() : properties.Table()->item(row, 1)->text();
    }
    KVX3DElementObject* element() const { return KVX3DElementObject::Cast(database.OpenObject(handles[0])); }

    KvxElementProperties properties;
    Recorded messages;
    PfEdInformationSink* previous = nullptr;
};

TEST_F(ElementPropertiesEditing, showsWhatTheElementIsAndWhereItStands)
{
    EXPECT_EQ(shown("名称"), QStringLiteral("墙 10"));
    EXPECT_EQ(shown("类型"), QStringLiteral("IfcWall"));
    EXPECT_EQ(shown("楼层"), QStringLiteral("10层"));
    EXPECT_EQ(shown("GlobalId"), QStringLiteral("3vB2YO$MX4xv5uCqZZG05x"));
    EXPECT_EQ(shown("尺寸 (m)"), QStringLiteral("1.00 × 2.00 × 3.00"));

    properties.ShowElements(&database, {handles[0], handles[1]});
    EXPECT_EQ(properties.Table()->rowCount(), 0);
}

TEST_F(ElementPropertiesEditing, eachEditIsOneNamedUndoStepAndBadValuesAreRefusedWithAMessage)
{
    PfDbTransactionManager* steps = database.TransactionManager();
    type("名称", "  外墙 10 ");
    EXPECT_EQ(element()->GetName(), L"外墙 10");
    EXPECT_EQ(steps->UndoName(), QStringLiteral("重命名构件"));
    type("透明度 (%)", "35");
    EXPECT_EQ(element()->GetTransparency(), 35);
    EXPECT_EQ(steps->UndoName(), QStringLiteral("修改透明度"));

    const unsigned long long changes = steps->GetChangeCount();
    for (const char* bad : {"101", "-1", "半透明"})
        type("透明度 (%)", bad);
    type("名称", "   ");
    EXPECT_EQ(steps->GetChangeCount(), changes);
    EXPECT_EQ(messages.texts.size(), 4);
    // The refused value does not stay in the cell.
    EXPECT_EQ(shown("透明度 (%)"), QStringLiteral("35"));
    EXPECT_EQ(shown("名称"), QStringLiteral("外墙 10"));

    steps->Undo();
    steps->Undo();
    EXPECT_EQ(element()->GetName(), L"墙 10");
    EXPECT_EQ(element()->GetTransparency(), 0);
}

} // namespace
