// Mozilla User Preferences

user_pref("mail.account.account1.server", "server1");
user_pref("mail.server.server1.directory", "S:\\AppData\\Thunderbird\\Profiles\\w2x8q7cd.buero\\Mail\\mail.example.com");
user_pref("mail.server.server1.name", "Büro-Konto");
user_pref("mail.server.server1.port", 110);
user_pref("mail.accountmanager.accounts", "account1");
