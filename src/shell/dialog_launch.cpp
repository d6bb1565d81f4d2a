// dialog_launch.cpp - the one way in which a modal dialog of the program is opened.

#include "engine/questions.h"
#include "program.h"

#include "ce/resource.h"

INT_PTR RunDialog(WORD id, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    HRSRC found = FindResourceW(gInstance, MAKEINTRESOURCEW(id), RT_DIALOG);
    const void* dialogTemplate = LoadResource(gInstance, found);
    return DialogBoxIndirectParamW(gInstance, dialogTemplate, owner, procedure, parameter);
}
