// Mozilla User Preferences

user_pref("mail.account.account1.server", "server1");
user_pref("mail.server.server1.directory", "S:\\AppData\\Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\Local Folders");
user_pref("mail.server.server1.name", "Local Folders");
user_pref("mail.server.server1.port", 110);
user_pref("mail.account.account2.server", "server2");
user_pref("mail.server.server2.directory", "S:\\AppData\\Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\pop.example.org");
user_pref("mail.server.server2.name", "anna@example.org");
user_pref("mail.server.server2.port", 110);
user_pref("mail.accountmanager.accounts", "account1,account2");
