#pragma once

// The command ids of the main window's command table.
namespace CommandId {
constexpr int SendRegistrationMail = 32803;
constexpr int UseExternalData = 32804;
constexpr int Save = 32781;
constexpr int Exit = 57665;
constexpr int AddCategory = 32784;
constexpr int RenameCategory = 32785;
constexpr int DeleteCategory = 32786;
constexpr int AddMember = 32787;
constexpr int DeleteMember = 32788;
constexpr int AddRank = 32789;
constexpr int RenameRank = 32790;
constexpr int DeleteRank = 32791;
constexpr int DeletePermission = 32792;
constexpr int AssignPhoneNumbers = 32827;
constexpr int DataCheck = 32840;
constexpr int ToolBar = 59392;
constexpr int StatusBar = 59393;
constexpr int BalloonHelp = 32808;
constexpr int StartServices = 32801;
constexpr int StopServices = 32802;
constexpr int DatabaseSettings = 32823;
constexpr int FileServiceSettings = 32825;
constexpr int CaptionSettings = 32821;
constexpr int HomePageSettings = 32820;
constexpr int MailSettings = 32826;
constexpr int AdminPassword = 32830;
constexpr int QuickNavigation = 32813;
constexpr int About = 57664;
} // namespace CommandId
