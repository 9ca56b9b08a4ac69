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
/// Values are set/has/get triples over one child element (property) or attribute each; a getter
/// returns the default named in its group when the value is absent. Rectangles and the group live
/// in memory only and are never written to XML.
class TQXML_EXPORT XMLAction : public XMLObject
{
    Q_OBJECT

public:
    XMLAction();
    /// Writes the attributes name, type and originator, in that order.
    XMLAction(const QString &name, int type, int originator);
    /// An action group hears of it through the signal destroyed().
    ~XMLAction() override;

    /// @{
    /// Switches: the properties "visible", "show_newest_page", "enabled", "checkable", "checked",
    /// "selected", "need_update", "exclude_publications", "paint_pixmap" and "sort_ascending".
    /// Visible and enabled are true when absent, all others false. A text that is neither 0 nor 1
    /// counts as present, and reads false.
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
    /// Attributes "name", "type" and "originator": null string or 0 when absent; an empty name
    /// leaves the earlier one. For a request, the type is the request type.
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
    /// One database key: properties "tqkey_hkey" and "tqkey_key", base 16. Present when both words
    /// are; each word reads as 0 when absent.
    void setTQKEY(const TQKEY_ELEMENT &key);
    bool hasTQKEY() const;
    TQKEY_ELEMENT getTQKEY() const;
    /// @}

    /// @{
    /// A list of database keys: properties "tqkey_hkey_list" and "tqkey_key_list", base 16. Null
    /// pointers are skipped; the caller keeps what it passes. getTQKEYList() returns new keys,
    /// owned by the caller; as many as the shorter of the two properties holds.
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
    /// "colour" and "sort_type". They read 0 when absent, the colour 0xffffff: 0xrrggbb, where
    /// higher bits are kept as they are. Channel and colour are stored in base 16, the others in
    /// base 10. The doubles keep 6 significant digits.
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
    /// On-screen areas, in the application's units; null rectangles until set.
    void setRect(int x, int y, int w, int h);
    QRect rect() const;
    void setTextRect(int x, int y, int w, int h);
    QRect textRect() const;
    /// @}

    /// @{
    /// The group the action is in, or null; not owned. Kept by the group.
    void setActionGroup(XMLActionGroup *group);
    XMLActionGroup *actionGroup() const;
    /// @}

    /// @{
    /// Appends a data item as the last child, converted or deep-copied, and returns the child.
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
    /// The checked state was written; emitted on every setChecked(), changed or not.
    void toggled(bool checked);
    /// A question before a toggle, for applications to emit; the library never does.
    void toggling(bool &cancel);

public Q_SLOTS:
    /// setChecked() with the opposite of isChecked().
    void toggle();
    /// Writes the checked state, then emits toggled() with the state as it reads back.
    void setChecked(bool /*checked*/);
    /// Writes what isEnabled() reads; emits nothing.
    void setEnabled(bool /*enabled*/);

private:
    QRect m_rect;
    QRect m_textRect;
    XMLActionGroup *m_actionGroup = nullptr;  // not owned
};

#endif
