#ifndef XMLACTION_H
#define XMLACTION_H

#include "xmlobject.h"

#include "tqtypes.h"

#include <QRect>

class TQPacketable;
class XMLActionGroup;
class XMLPacketable;

/// One user-interface action, or one request to the server bridge: an "action" element.
///
/// Each value has a setter, a has() and a getter, and is stored in one property (child element) or
/// attribute. When the value is absent, the getter returns the default named in its group.
/// Rectangles and the group exist in memory only; they are not part of the XML.
class TQXML_EXPORT XMLAction : public XMLObject
{
    Q_OBJECT

public:
    XMLAction();
    /// Writes the attributes name, type and originator, in that order.
    XMLAction(const QString &name, int type, int originator);
    /// Its action group is told by the signal destroyed().
    ~XMLAction() override;

    /// @{
    /// Switches: the properties "visible", "show_newest_page", "enabled", "checkable", "checked",
    /// "selected", "need_update", "exclude_publications", "paint_pixmap" and "sort_ascending".
    /// Visible and enabled are true when absent, all others false. Any text other than "1"
    /// reads false, but the value counts as present.
    static void setVisible(QDomElement &e, bool visible);
    void setVisible(bool visible);
    bool hasVisible() const;
    bool getVisible() const;
    void setShowNewestPage(bool show);
    bool hasShowNewestPage() const;
    bool getShowNewestPage() const;
    bool hasEnabled() const;
    bool isEnabled() const;
    void setCheckable(bool checkable);
    bool hasCheckable() const;
    bool isCheckable() const;
    bool hasChecked() const;
    bool isChecked() const;
    void setSelected(bool selected);
    bool hasSelected() const;
    bool isSelected() const;
    void setNeedUpdate(bool needed);
    bool hasNeedUpdate() const;
    bool getNeedUpdate() const;
    void setExcludePublications(bool exclude);
    bool hasExcludePublications() const;
    bool getExcludePublications() const;
    void setPaintPixmap(bool paint);
    bool hasPaintPixmap() const;
    bool getPaintPixmap() const;
    void setSortAscending(bool ascending);
    bool hasSortAscending() const;
    bool getSortAscending() const;
    /// @}

    /// @{
    /// Attributes "name", "type" and "originator": a null string or 0 when absent. An
    /// empty name is ignored. In a request the type is the request type.
    static void setName(QDomElement &e, const QString &name);
    void setName(const QString &name);
    QString getName() const;
    void setType(int type);
    int getType() const;
    void setOriginator(int originator);
    int getOriginator() const;
    /// @}

    /// @{
    /// The original name, property "org_name"; a null string when absent.
    static void setOrgName(QDomElement &e, const QString &orgName);
    void setOrgName(const QString &orgName);
    QString getOrgName() const;
    /// @}

    /// @{
    /// One database key: properties "tqkey_hkey" and "tqkey_key", base 16. Present only when both
    /// words are; an absent word reads as 0.
    void setTQKEY(const TQKEY_ELEMENT &key);
    bool hasTQKEY() const;
    TQKEY_ELEMENT getTQKEY() const;
    /// @}

    /// @{
    /// A list of database keys: properties "tqkey_hkey_list" and "tqkey_key_list", base 16. Null
    /// pointers are skipped; the caller keeps the keys that it passes. getTQKEYList() returns new
    /// keys, which the caller owns: as many as the shorter of the two properties holds.
    void setTQKEYList(const QList<TQKEY_ELEMENT *> &keys);
    bool hasTQKEYList() const;
    [[nodiscard]] QList<TQKEY_ELEMENT *> getTQKEYList() const;
    /// @}

    /// @{
    /// Job ids: properties "jobids" and "tqjobids", lists of numbers in base 16. The single forms
    /// write a list of one and read the first, 0 when there is none.
    void setJobIDs(const QList<int> &ids);
    void setJobID(int id);
    bool hasJobIDs() const;
    bool hasJobID() const;
    QList<int> getJobIDs() const;
    int getJobID() const;
    void setTQJobIDs(const QList<int> &ids);
    void setTQJobID(int id);
    bool hasTQJobIDs() const;
    bool hasTQJobID() const;
    QList<int> getTQJobIDs() const;
    int getTQJobID() const;
    /// @}

    /// @{
    /// Numbers: the properties "pagenum", "channel_id", "index", "x", "y", "x_double", "y_double",
    /// "colour" and "sort_type". An absent number reads 0, an absent colour 0xffffff. A
    /// colour is 0xrrggbb; higher bits are kept. Channel and colour are stored in base 16, the
    /// others in base 10. The doubles keep 6 significant digits.
    void setPageNumber(int page);
    bool hasPageNumber() const;
    int getPageNumber() const;
    void setChannelID(unsigned int id);
    bool hasChannelID() const;
    unsigned int getChannelID() const;
    void setIndex(int index);
    bool hasIndex() const;
    int getIndex() const;
    void setX(int x);
    bool hasX() const;
    int getX() const;
    void setY(int y);
    bool hasY() const;
    int getY() const;
    void setXDouble(double x);
    bool hasXDouble() const;
    double getXDouble() const;
    void setYDouble(double y);
    bool hasYDouble() const;
    double getYDouble() const;
    void setColour(unsigned int colour);
    bool hasColour() const;
    unsigned int getColour() const;
    void setSortType(int type);
    bool hasSortType() const;
    int getSortType() const;
    /// @}

    /// @{
    /// Areas on the screen, in the application's units; null rectangles until they are set.
    void setRect(int x, int y, int w, int h);
    QRect rect() const;
    void setTextRect(int x, int y, int w, int h);
    QRect textRect() const;
    /// @}

    /// @{
    /// The group of the action, or null; not owned. XMLActionGroup sets it.
    void setActionGroup(XMLActionGroup *group);
    XMLActionGroup *actionGroup() const;
    /// @}

    /// @{
    /// Converts or deep-copies a data item, appends it as the last child, and returns that child.
    QDomElement append(TQPacketable &item);
    QDomElement append(XMLPacketable &item);
    /// @}

    /// @{
    /// XMLObject's operations of the same names on the action's own element.
    void removeNodesOfType(XMLOBJECT_TYPE t);
    bool hasNodesOfType(XMLOBJECT_TYPE t) const;
    int getNodesOfType(XMLOBJECT_TYPE t, std::list<QDomNode> &out) const;
    /// @}

    /// Writes "-- title --" and the element's text to standard output, as UTF-8.
    void print(const QString &title) const;

Q_SIGNALS:
    /// Emitted by every setChecked(), also when the state is the same as before.
    void toggled(bool checked);
    /// For applications, to ask before a toggle. The library never emits it.
    void toggling(bool &cancel);

public Q_SLOTS:
    /// setChecked() with the opposite of isChecked().
    void toggle();
    /// Writes the checked state, then emits toggled() with the state as it reads back.
    void setChecked(bool /*checked*/);
    /// Sets what isEnabled() returns; emits nothing.
    void setEnabled(bool /*enabled*/);

private:
    QRect m_rect;
    QRect m_textRect;
    XMLActionGroup *m_actionGroup = nullptr;  // not owned
};

#endif
