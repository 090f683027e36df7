#pragma once

#include "panel_sim/panel_model.h"

#include <QDBusConnection>
#include <QStringList>

/// Offers a panel on the bus: its objects under the bus name com.wenu.OVIK.
class DBusFace : public QObject
{
    Q_OBJECT

public:
    /// The names of all objects: the last name component of the path, "OVIK" for the root and
    /// "HWPlugin" for the module of a slot.
    static QStringList objectNames();

    DBusFace(sim::Panel& panel, const QDBusConnection& bus, QObject* parent = nullptr);

    /// Registers the objects, but for those named in @p missing, and then the bus name: whoever
    /// sees the name finds the objects. Empty when it worked, else why it did not.
    QString open(const QStringList& missing);

private:
    bool registerObjects(const QStringList& missing);

    sim::Panel& m_panel;
    QDBusConnection m_bus;
};
