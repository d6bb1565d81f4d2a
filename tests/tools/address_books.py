"""The same contact in the CSV of other programs, with the columns that each of them writes."""
import csv
import io

CONTACT = {"last": "Müller", "first": "Jörg", "company": "Kübel, Sohn & Co", "home": "+49 221 1", "mail": "joerg@example.org",
           "town": "Köln", "notes": "eins\nzwei; \"drei\""}
# Values that a contact of a device can't hold.
MORE = {"middle": "Karl", "mobile": "+49 170 2", "mail2": "zwei@example.org"}

OUTLOOK = """Title,First Name,Middle Name,Last Name,Suffix,Company,Department,Job Title,Business Street,Business Street 2,Business \
Street 3,Business City,Business State,Business Postal Code,Business Country/Region,Home Street,Home Street 2,Home Street 3,Home \
City,Home State,Home Postal Code,Home Country/Region,Other Street,Other City,Assistant's Phone,Business Fax,Business Phone,Business \
Phone 2,Callback,Car Phone,Company Main Phone,Home Fax,Home Phone,Home Phone 2,ISDN,Mobile Phone,Other Fax,Other Phone,Pager,\
Primary Phone,Radio Phone,TTY/TDD Phone,Telex,Account,Anniversary,Assistant's Name,Billing Information,Birthday,Categories,Children,\
Directory Server,E-mail Address,E-mail Type,E-mail Display Name,E-mail 2 Address,E-mail 2 Type,E-mail 2 Display Name,Gender,Hobby,\
Initials,Keywords,Language,Location,Manager's Name,Mileage,Notes,Office Location,Priority,Private,Profession,Referred By,\
Sensitivity,Spouse,User 1,Web Page"""
OUTLOOK_GERMAN = """Anrede,Vorname,Weitere Vornamen,Nachname,Suffix,Firma,Abteilung,Position,Straße geschäftlich,Ort geschäftlich,\
Region geschäftlich,Postleitzahl geschäftlich,Land/Region geschäftlich,Straße privat,Ort privat,Bundesland/Kanton privat,\
Postleitzahl privat,Land/Region privat,Weitere Straße,Weiterer Ort,Telefon Assistent,Fax geschäftlich,Telefon geschäftlich,Telefon \
geschäftlich 2,Rückmeldung,Autotelefon,Telefon Firma,Fax privat,Telefon (privat),Telefon (privat 2),ISDN,Mobiltelefon,Weiteres Fax,\
Weiteres Telefon,Pager,Haupttelefon,Mobiltelefon 2,Telefon für Hörbehinderte,Telex,Abrechnungsinformation,Benutzer 1,Beruf,Büro,\
E-Mail-Adresse,E-Mail-Typ,E-Mail: Angezeigter Name,E-Mail 2: Adresse,E-Mail 2: Typ,E-Mail 2: Angezeigter Name,Empfohlen von,\
Geburtstag,Geschlecht,Hobby,Initialen,Jahrestag,Kategorien,Kinder,Konto,Name Assistent,Notizen,Ort,Partner,Priorität,Privat,\
Reisekilometer,Sprache,Stichwörter,Vertraulichkeit,Verzeichnisserver,Webseite"""
OUTLOOK_365 = """First Name,Middle Name,Last Name,Title,Suffix,Nickname,Given Yomi,Surname Yomi,E-mail Address,E-mail 2 Address,E-mail \
3 Address,Home Phone,Home Phone 2,Business Phone,Business Phone 2,Mobile Phone,Car Phone,Other Phone,Primary Phone,Pager,Business \
Fax,Home Fax,Other Fax,Company Main Phone,Callback,Radio Phone,Telex,TTY/TDD Phone,IMAddress,Job Title,Department,Company,Office \
Location,Manager's Name,Assistant's Name,Assistant's Phone,Company Yomi,Business Street,Business City,Home Street,Home City,Home \
State,Home Postal Code,Home Country/Region,Other City,Personal Web Page,Spouse,Schools,Hobby,Location,Web Page,Birthday,Anniversary,\
Notes"""
OUTLOOK_365_GERMAN = """Vorname,Zweiter Vorname,Nachname,Titel,Suffix,Spitzname,E-Mail-Adresse,E-Mail-Adresse 2,Telefon privat,Telefon \
privat 2,Telefon geschäftlich,Mobiltelefon,Weiteres Telefon,Pager,Fax geschäftlich,Position,Abteilung,Firma,Straße geschäftlich,Ort \
geschäftlich,Straße privat,Ort (privat),Webseite,Geburtstag,Notizen"""
GOOGLE_OLD = """Name,Given Name,Additional Name,Family Name,Yomi Name,Name Prefix,Name Suffix,Initials,Nickname,Birthday,Gender,Location,\
Billing Information,Mileage,Occupation,Hobby,Sensitivity,Priority,Subject,Notes,Language,Photo,Group Membership,E-mail 1 - Type,E-mail \
1 - Value,E-mail 2 - Type,E-mail 2 - Value,Phone 1 - Type,Phone 1 - Value,Phone 2 - Type,Phone 2 - Value,Address 1 - Type,Address 1 - \
Formatted,Address 1 - Street,Address 1 - City,Address 1 - Country,Organization 1 - Type,Organization 1 - Name,Organization 1 - Title,\
Website 1 - Type,Website 1 - Value"""
GOOGLE = """First Name,Middle Name,Last Name,Phonetic First Name,Phonetic Middle Name,Phonetic Last Name,Name Prefix,Name Suffix,Nickname,\
File As,Organization Name,Organization Title,Organization Department,Birthday,Notes,Photo,Labels,E-mail 1 - Label,E-mail 1 - Value,\
E-mail 2 - Label,E-mail 2 - Value,Phone 1 - Label,Phone 1 - Value,Phone 2 - Label,Phone 2 - Value,Address 1 - Label,Address 1 - \
Formatted,Address 1 - Street,Address 1 - City,Address 1 - Country,Website 1 - Label,Website 1 - Value"""
THUNDERBIRD = """First Name,Last Name,Display Name,Nickname,Primary Email,Secondary Email,Screen Name,Work Phone,Home Phone,Fax Number,\
Pager Number,Mobile Number,Home Address,Home Address 2,Home City,Home State,Home ZipCode,Home Country,Work Address,Work City,Job Title,\
Department,Organization,Web Page 1,Web Page 2,Birth Year,Birth Month,Birth Day,Custom 1,Notes,"""
THUNDERBIRD_GERMAN = """Vorname,Nachname,Anzeigename,Spitzname,Primäre E-Mail-Adresse,Sekundäre E-Mail-Adresse,Messenger-Name,Tel. \
dienstlich,Tel. privat,Fax-Nummer,Pager-Nummer,Mobil-Tel.-Nr.,Privat: Adresse,Privat: Ort,Privat: Bundesland,Privat: PLZ,Privat: Land,\
Dienstlich: Adresse,Dienstlich: Ort,Arbeitstitel,Abteilung,Organisation,Webseite 1,Webseite 2,Geburtsjahr,Geburtsmonat,Geburtstag,\
Benutzerdef. 1,Notizen,"""

IN_ENGLISH = {"last": "Last Name", "first": "First Name", "company": "Company", "home": "Home Phone", "mail": "E-mail Address",
              "town": "Home City", "notes": "Notes", "middle": "Middle Name", "mobile": "Mobile Phone", "mail2": "E-mail 2 Address"}
IN_GERMAN = {"last": "Nachname", "first": "Vorname", "company": "Firma", "home": "Telefon (privat)", "mail": "E-Mail-Adresse",
             "town": "Ort privat", "notes": "Notizen", "middle": "Weitere Vornamen", "mobile": "Mobiltelefon",
             "mail2": "E-Mail 2: Adresse"}
IN_GERMAN_365 = {**IN_GERMAN, "home": "Telefon privat", "town": "Ort (privat)", "middle": "Zweiter Vorname", "mail2": "E-Mail-Adresse 2"}
IN_GOOGLE = {**IN_ENGLISH, "company": "Organization Name", "home": "Phone 2 - Value", "mail": "E-mail 1 - Value",
             "town": "Address 1 - City", "mobile": "Phone 1 - Value", "mail2": "E-mail 2 - Value"}
IN_GOOGLE_OLD = {**IN_GOOGLE, "last": "Family Name", "first": "Given Name", "middle": "Additional Name",
                 "company": "Organization 1 - Name"}
# Both mail addresses are in one cell.
IN_GOOGLE_LIST = {**IN_GOOGLE, "mail2": None, "mail": "E-mail 1 - Value"}
IN_THUNDERBIRD = {**IN_ENGLISH, "company": "Organization", "mail": "Primary Email", "middle": "Nickname", "mobile": "Mobile Number",
                  "mail2": "Secondary Email"}
IN_THUNDERBIRD_GERMAN = {**IN_GERMAN, "company": "Organisation", "home": "Tel. privat", "mail": "Primäre E-Mail-Adresse",
                         "town": "Privat: Ort", "middle": "Spitzname", "mobile": "Mobil-Tel.-Nr.", "mail2": "Sekundäre E-Mail-Adresse"}

LABELS = {"Phone 1 - Label": "Mobile", "Phone 2 - Label": "Home", "E-mail 1 - Label": "* Work", "Labels": "* myContacts"}
LABELS_OLD = {"Phone 1 - Type": "Mobile", "Phone 2 - Type": "Home", "E-mail 1 - Type": "* ", "Group Membership": "* myContacts",
              "Name": "Jörg Müller"}
LABELS_GERMAN = {"Phone 1 - Label": "Mobil", "Phone 2 - Label": "Privat", "E-mail 1 - Label": "Arbeit", "Labels": "* myContacts"}
LABELS_APPLE = {"Phone 1 - Label": "iPhone", "Phone 2 - Label": "_$!<Home>!$_", "Labels": "Imported ::: * myContacts"}
LABELS_APPLE_OLD = {"Phone 1 - Type": "iPhone", "Phone 2 - Type": "_$!<Home>!$_", "Name": "Müller, Jörg"}

DATE, AMERICAN, GERMAN = {"Birthday": "1985-04-12"}, {"Birthday": "4/12/1985"}, {"Geburtstag": "12.4.1985"}
# For each kind of file: its encoding, separator and columns, the meaning of the columns, and further cells.
KINDS = {
    "Outlook": ("cp1252", ",", OUTLOOK, IN_ENGLISH, AMERICAN),
    "Outlook, UTF-8": ("utf-8-sig", ",", OUTLOOK, IN_ENGLISH, AMERICAN),
    "Outlook, British": ("cp1252", ",", OUTLOOK, IN_ENGLISH, {"Birthday": "12/4/1985"}),
    "Outlook, German": ("cp1252", ",", OUTLOOK_GERMAN, IN_GERMAN, GERMAN),
    "Outlook, German, UTF-8": ("utf-8-sig", ",", OUTLOOK_GERMAN, IN_GERMAN, GERMAN),
    "Outlook, German, saved by a spreadsheet": ("cp1252", ";", OUTLOOK_GERMAN, IN_GERMAN, {"Geburtstag": "12.04.1985 00:00"}),
    "Outlook 365": ("utf-8", ",", OUTLOOK_365, IN_ENGLISH, DATE),
    "Outlook 365, German": ("utf-8", ",", OUTLOOK_365_GERMAN, IN_GERMAN_365, GERMAN),
    "Google, old": ("utf-8", ",", GOOGLE_OLD, IN_GOOGLE_OLD, {**DATE, **LABELS_OLD}),
    "Google, old, UTF-16": ("utf-16", ",", GOOGLE_OLD, IN_GOOGLE_OLD, {**DATE, **LABELS_OLD}),
    "Google": ("utf-8", ",", GOOGLE, IN_GOOGLE, {**DATE, **LABELS}),
    "Google, German labels": ("utf-8", ",", GOOGLE, IN_GOOGLE, {**DATE, **LABELS_GERMAN}),
    "Google, saved by a spreadsheet": ("cp1252", ";", GOOGLE, IN_GOOGLE, {"Birthday": "12.04.1985", **LABELS_GERMAN}),
    "Apple by way of Google": ("utf-8", ",", GOOGLE, IN_GOOGLE_LIST, {**DATE, **LABELS_APPLE}),
    "Apple by way of Google, old": ("utf-8", ",", GOOGLE_OLD, IN_GOOGLE_OLD, {**DATE, **LABELS_APPLE_OLD}),
    "Thunderbird": ("utf-8", ",", THUNDERBIRD, IN_THUNDERBIRD, {"Birth Year": "1985", "Birth Month": "4", "Birth Day": "12"}),
    "Thunderbird, German": ("utf-8-sig", "\t", THUNDERBIRD_GERMAN, IN_THUNDERBIRD_GERMAN,
                            {"Geburtsjahr": "1985", "Geburtsmonat": "04", "Geburtstag": "12"}),
}


def address_book(kind, second_birthday=""):
    """Returns the file, and the names of its cells that a contact can't hold. The birthday of a second contact shows
    the order of day and month."""
    encoding, separator, headings, places, more = KINDS[kind]
    names = headings.split(",")
    cells = {places[what]: value for what, value in (CONTACT | MORE).items() if places[what]}
    if not places["mail2"]:
        cells[places["mail"]] += " ::: " + MORE["mail2"]
    out = io.StringIO()
    rows = csv.writer(out, delimiter=separator)
    rows.writerow(names)
    rows.writerow([{**cells, **more}.get(name, "") for name in names])
    if second_birthday:
        rows.writerow([{places["last"]: "b", "Birthday": second_birthday}.get(name, "") for name in names])
    return out.getvalue().encode(encoding), sorted(places[what] or places["mail"] for what in MORE)
