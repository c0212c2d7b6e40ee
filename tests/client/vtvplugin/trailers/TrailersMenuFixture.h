#pragma once

// What the trailers menu tests share: a stack whose bottom screen stands for the
// shell's top menu, the Vireo Trailers appliance, and a few ways to drive and read
// them. Header-only: the test programs of this folder include it.

#include "FeeddProcess.h"
#include "TempHome.h"

#include "toolkit/media/PreviewController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "toolkit/stack/LayerController.h"
#include "vtvplugin/appliance/VireoTrailersAppliance.h"
#include "vtvplugin/trailers/VireoTrailerController.h"
#include "vtvplugin/trailers/VireoTrailerListsController.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QJsonArray>
#include <QLoggingCategory>
#include <QTest>

using namespace Qt::StringLiterals;

class TrailersMenuFixture : public TempHome {
protected:
    void SetUp() override
    {
        TempHome::SetUp();
        QLoggingCategory::setFilterRules(u"vireo.*.debug=true"_s);
        m_savedEndpoint = qgetenv("VIREO_TRAILER_ENDPOINT");
        m_stack = std::make_unique<shell::ControllerStack>();
        m_stack->pushController(std::make_unique<shell::LayerController>(m_scene));
        m_appliance = std::make_unique<VireoTrailersAppliance>();
    }
    void TearDown() override
    {
        m_stack.reset();
        m_appliance.reset();
        if (m_savedEndpoint.isNull())
            qunsetenv("VIREO_TRAILER_ENDPOINT");
        else
            qputenv("VIREO_TRAILER_ENDPOINT", m_savedEndpoint);
        TempHome::TearDown();
    }

    static void setEndpoint(const QString& base)
    {
        qputenv("VIREO_TRAILER_ENDPOINT", base.toUtf8());
    }
    VireoTrailerListsController* enter()
    {
        m_stack->pushController(m_appliance->applianceControllerWithScene(m_scene));
        return lists();
    }
    VireoTrailerListsController* lists() const
    {
        return qobject_cast<VireoTrailerListsController*>(m_stack->topController());
    }
    VireoTrailerController* trailers() const
    {
        return qobject_cast<VireoTrailerController*>(m_stack->topController());
    }
    void press(shell::RemoteAction action, long times = 1)
    {
        for (long i = 0; i < times; ++i)
            m_stack->handleAction(action);
    }
    // The title of the top screen's preview, null without one.
    QString previewTitle() const
    {
        const QJsonValue preview = m_stack->describeTop().value(u"preview"_s);
        return preview.isObject() ? preview[u"title"_s].toString() : QString();
    }
    bool waitForPreview(const QString& title, int ms)
    {
        return QTest::qWaitFor([&] { return previewTitle() == title; }, ms);
    }
    QStringList rowTitles() const
    {
        QStringList titles;
        for (const QJsonValue& row : m_stack->describeTop().value(u"rows"_s).toArray())
            titles.append(row[u"title"_s].toString());
        return titles;
    }

    shell::Scene m_scene;
    std::unique_ptr<shell::ControllerStack> m_stack;
    std::unique_ptr<VireoTrailersAppliance> m_appliance;
    QByteArray m_savedEndpoint;
};
