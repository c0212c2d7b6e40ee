#include "vtvplugin/trailers/TrailerLoaderDelegate.h"

TrailerLoaderDelegate::~TrailerLoaderDelegate() = default;
