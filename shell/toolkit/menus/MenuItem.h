#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>

namespace shell {

// One row of a menu list: a folder row (with the arrow that says it opens another
// screen), a plain text row, or an adorned row whose title sits on its text item.
class MenuItem {
public:
    enum class Kind { Folder, Plain, Adorned };

    // The text part of a row.
    class TextItem {
    public:
        QString title() const { return m_title; }
        void setTitle(const QString& title) { m_title = title; }

    private:
        QString m_title;
    };

    static std::unique_ptr<MenuItem> folderMenuItem();
    static std::unique_ptr<MenuItem> menuItem();
    // A plain row titled `title`; none for a null title (a row past the list's end).
    static std::unique_ptr<MenuItem> plainMenuItem(const QString& title);
    static std::unique_ptr<MenuItem> adornedMenuItem();

    Kind kind() const { return m_kind; }
    // "folder", "plain" or "adorned".
    QString kindName() const;
    bool hasArrow() const { return m_kind == Kind::Folder; }

    QString title() const { return m_text.title(); }
    void setTitle(const QString& title) { m_text.setTitle(title); }
    TextItem& textItem() { return m_text; }

    // A partly watched movie's row: where playback would resume and the movie's length
    // (0 when not known without reading more than the row may). No resume point: 0.
    void setResumePoint(qint64 positionMS, qint64 durationMS);
    bool isPartlyWatched() const { return m_resumeMS > 0; }
    qint64 resumePositionMS() const { return m_resumeMS; }
    qint64 durationMS() const { return m_durationMS; }
    // How much of the movie lies before the resume point, in (0, 1]; 0 when the length
    // is not known (or the row is not partly watched).
    double watchedFraction() const;

private:
    explicit MenuItem(Kind kind)
        : m_kind(kind)
    {
    }

    const Kind m_kind;
    TextItem m_text;
    qint64 m_resumeMS = 0;
    qint64 m_durationMS = 0;
};

} // namespace shell
