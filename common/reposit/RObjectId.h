#pragma once

#include <QString>
#include <QtGlobal>

// Identifies one service object across the client and the service: the account
// domain it lives in, its object type and numeric id, and its global id text.
struct RObjectId {
    RObjectId() = default;

    QString m_strDomain;
    qint32 m_nObjectType = 0;
    qint32 m_nObjectId = 0;
    QString m_strGlobalId;
};
