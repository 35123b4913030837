#pragma once

#include <QIcon>

// The 16-pixel images of the organisation view, drawn by the console itself:
// a folder for the root and the groups, a person for members, blue for male
// and red for female, and greyed with a small mark for a member who stands
// in no group.
class OrganizeIcons final
{
public:
    static QIcon root();
    static QIcon group();
    // The member grid's row icon by its index: 0 male placed, 1 female
    // placed, 2 male unplaced, 3 female unplaced.
    static QIcon member(int iconIndex);
    static QIcon membership(bool male) { return member(male ? 0 : 1); }
};
