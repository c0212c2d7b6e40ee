#pragma once

#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <memory>

// A container put aside while a nested value is being built, with the member name
// that was current. Exactly one of the two pointers is set.
struct parent_vals {
    QString memberName;
    std::unique_ptr<RXMLRPCStruct> pStruct;
    std::unique_ptr<RXMLRPCList> pList;
};
