#include "toolkit/scene/HeaderControl.h"

namespace shell {

HeaderControl::HeaderControl()
    : Control(Kind::Header)
{
}

HeaderControl::~HeaderControl() = default;

} // namespace shell
