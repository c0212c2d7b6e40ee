#pragma once

// Whoever starts a trailer load and wants to hear that its list has arrived.
class TrailerLoaderDelegate {
public:
    virtual ~TrailerLoaderDelegate();

    // A load completed (the list may be empty): time to show what arrived.
    virtual void _updatePreview() = 0;

protected:
    TrailerLoaderDelegate() = default;
    TrailerLoaderDelegate(const TrailerLoaderDelegate&) = default;
    TrailerLoaderDelegate& operator=(const TrailerLoaderDelegate&) = default;
};
