// The shell's list dialog: rows over a folder's files, with scrolling and selection.
//
// Row widgets are 40 and up. The dialog shows whatever lines its two pointers name, so a derived dialog can put lists of its own
// in the place of the folder's.
#pragma once

#include <vector>

#include "platform/velshell/VelDialog.h"

// A file type for the constructor that shows both kinds of recordings.
inline constexpr int kListTypeRecordings = 16;

// The dialog's message to itself: the current list has changed.
inline constexpr UINT WM_LIST_REFRESH = WM_USER + 1; // 1025

class DMB_HOST_API CVelFileDialog : public CVelDialog {
public:
    CVelFileDialog(GView* parent, const WCHAR* folder, int fileType);
    const GRuntimeClass* GetRuntimeClass() const override;
    ~CVelFileDialog() override;
    const GMessageMap* GetMessageMap() const override;
    // Draws the widgets and, beside each file row, its date and length.
    void OnDraw(HDC dc) override;
    int OnInitDialog() override;
    void OnOK() override;

    // How many rows are shown at once.
    virtual int GetVisibleRows();

    // Position of the picked line in the current list when the dialog ended with OK; -1 none.
    [[nodiscard]] int GetSelection() const { return m_nSelection; }
    // Folder of the file list; ends in a path separator.
    [[nodiscard]] const WString& GetFolder() const { return m_strFolder; }
    // File names, in the order shown.
    [[nodiscard]] const std::vector<WString>& GetFileLines() const { return m_arrFileLines; }

    static const GRuntimeClass classCVelFileDialog;
    static const GMessageMap messageMap;

protected:
    // Where a list stands: its length, its first visible row and its marked row (-1 none).
    struct ItemList {
        int count = 0;
        int top = 0;
        int marked = -1;
    };

    // Makes the list hold as many entries as given; top and mark stay inside it.
    void SetItemCount(ItemList& items, int count);
    // Reads the folder again into the file pair.
    void ReadFolder();
    // Gives the row widgets the texts of the current list.
    void UpdateRows();
    LRESULT OnRefresh(WPARAM wParam, LPARAM lParam);
    // A row was touched: the first touch marks it, the second takes it.
    void PickRow(int row);
    // Moves the list by so many rows; moves the marked line, which stays visible.
    void Scroll(int rows);
    void MoveMark(int rows);
    void OnKeyUp(UINT key, UINT repeatCount, UINT flags);

    std::vector<WString> m_arrFileLines;
    ItemList m_FileItems;
    const std::vector<WString>* m_pLines = &m_arrFileLines; // the current pair
    ItemList* m_pItems = &m_FileItems;
    WString m_strFolder;
    int m_nFileType;
    int m_nSelection = -1;
    struct FileDialogImpl;
    FileDialogImpl* m_pFileDialog = nullptr;
    friend class VelShellAccess;
};
