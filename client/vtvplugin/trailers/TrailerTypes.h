#pragma once

#include <QString>

// One ranked trailer list of the service: its title as the menus show it and the
// XML-RPC method that returns it. Fixed-size texts, as the table has always been laid out.
struct TrailerType {
    char title[32];
    char methodName[72];
};

// The four lists, indexed by list type 0 to 3.
extern const TrailerType g_trailerTypes[4];

class TrailerTypes {
public:
    TrailerTypes() = delete;

    static constexpr int kCount = 4;

    static bool isValid(int type) { return type >= 0 && type < kCount; }
    // Null for a type outside 0 .. 3.
    static QString title(int type);
    static QString methodName(int type);
    // The type whose method is `methodName`, -1 for none.
    static int typeForMethod(const QString& methodName);
};
