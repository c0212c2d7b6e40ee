#include "toolkit/appliance/Appliance.h"

namespace shell {

Appliance::Appliance(QObject* parent)
    : QObject(parent)
{
}

Appliance::~Appliance() = default;

} // namespace shell
