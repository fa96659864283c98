// Message texts and dialogs: the label catalogue shared with the suite, and the one message
// routine through which every message and question reaches the user.
#pragma once

#include <string>

namespace zl3 {

// Label of `group` and `index`; a label that is not in the table comes back as
// "???:" & group & ":" & index & ":???" so that it shows on screen instead of a blank.
std::string Libelle_Fra(const std::string& group, int index);

// Shows a message through the message service and returns the button pressed (1 Ok, 2 Cancel,
// 3 Abort, 4 Retry, 5 Ignore, 6 Yes, 7 No). Each box gets an identifier and is traced as
// "FrmMsgBox: " & text & " |Id:" & id (a text of several lines between square brackets), then
// "FrmMsgBox: Id:" & id & " closed". A failure inside the dialog answers as the close button.
int AffMsg(const std::string& text, const std::string& title, int style);
// Yes/no (or other) question: the text is trimmed, then shown by AffMsg.
int Question(const std::string& text, const std::string& title, int style);

}  // namespace zl3
