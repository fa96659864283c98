// Record layouts of the advertising files: the running order, the broadcast log, the messages,
// the contract headers, the spot headers, clients, salespeople and business sectors.
//
// Fields named "Champ" followed by their offset are kept as they are read: the statistics do not
// use them, and writing a record back must not change them.
#pragma once

#include "records/Field.h"

namespace zl3::rec {

// ---- FRAD027: advertising running order (one file per station) --------------------------------
// Keys: 0 = Date to Seconde; 1 = CleSpot.
namespace ConducteurPub {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("Date", 8, 0),            // "yyyyMMdd"
    decl::Text("Heure", 2, 8), decl::Text("Minute", 2, 10), decl::Text("Seconde", 2, 12),
    decl::Text("CleSpot", 8, 14),        // key of the commercial to air
    decl::Text("NoContrat", 6, 22),      // contract number (key 2 of FRAD005)
    decl::Text("DureeSecondes", 4, 28),  // length in seconds, digits
    decl::Text("TypeEcran", 1, 32),      // kind of commercial break
    decl::Text("CleMessage", 8, 33),     // message key (key 0 of FRAD026)
    decl::Text("Champ041", 1, 41),
    decl::Text("Champ042", 4, 42),
    decl::Text("Champ046", 4, 46),
});
// clang-format on

inline constexpr Layout kLayout{"ConducteurPub", 27, 50, 50, kFields};

inline constexpr Field Date = decl::Named(kFields, "Date");
inline constexpr Field Heure = decl::Named(kFields, "Heure");
inline constexpr Field Minute = decl::Named(kFields, "Minute");
inline constexpr Field Seconde = decl::Named(kFields, "Seconde");
inline constexpr Field CleSpot = decl::Named(kFields, "CleSpot");
inline constexpr Field NoContrat = decl::Named(kFields, "NoContrat");
inline constexpr Field DureeSecondes = decl::Named(kFields, "DureeSecondes");
inline constexpr Field TypeEcran = decl::Named(kFields, "TypeEcran");
inline constexpr Field CleMessage = decl::Named(kFields, "CleMessage");
inline constexpr Field Cle = Join(Date, Seconde, "Cle");

}  // namespace ConducteurPub

// ---- FRAD018: advertising broadcast log (one file per station) --------------------------------
// Keys: 0 = Date to Seconde, "yyyyMMddHHmmss" (duplicates allowed); 1 = CodeClient + CleSpot;
// 2 = CleMessage + CodeProduit. The structure is 248 bytes long in a 250-byte record.
namespace LogPub {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("Date", 8, 0),            // broadcast date, "yyyyMMdd"
    decl::Text("Heure", 2, 8), decl::Text("Minute", 2, 10), decl::Text("Seconde", 2, 12),
    decl::Text("CodeClient", 8, 14),     // client (key 0 of FRAD003)
    decl::Text("CleSpot", 8, 22),        // the aired commercial, shown as the commercial key
    decl::Text("CleMessage", 8, 30),     // message (key 0 of FRAD026)
    decl::Text("CodeProduit", 8, 38),    // advertised product
    decl::Text("Reference", 40, 46),     // broadcast zone, "region|town" ("IDF|PARIS")
    decl::Text("NoContrat", 6, 86),      // contract number (key 2 of FRAD005)
    decl::Text("TypeEcran", 3, 92),      // kind of commercial break
    // byte 95 is a gap; each integer below is followed by two unused bytes
    decl::Int16("Duree", 96),            // aired length, seconds
    decl::Int16("DureePrevue", 100),     // planned length, seconds
    decl::Int16("NoEcran", 104),         // commercial break of the day
    decl::Int16("RangEcran", 108),       // position of the spot in its break
    decl::Int16("NbSpotsEcran", 112),    // spots in the break
    decl::Text("DatePrevue", 8, 116),    // date the broadcast was planned for, "yyyyMMdd"
    decl::Text("Champ124", 2, 124),
    decl::Text("Champ126", 2, 126),
    decl::Text("Champ128", 119, 128),
    // byte 247: end of the structure
});
// clang-format on

inline constexpr Layout kLayout{"LogPub", 18, 248, 250, kFields};

inline constexpr Field Date = decl::Named(kFields, "Date");
inline constexpr Field Heure = decl::Named(kFields, "Heure");
inline constexpr Field Minute = decl::Named(kFields, "Minute");
inline constexpr Field Seconde = decl::Named(kFields, "Seconde");
inline constexpr Field CodeClient = decl::Named(kFields, "CodeClient");
inline constexpr Field CleSpot = decl::Named(kFields, "CleSpot");
inline constexpr Field CleMessage = decl::Named(kFields, "CleMessage");
inline constexpr Field CodeProduit = decl::Named(kFields, "CodeProduit");
inline constexpr Field Reference = decl::Named(kFields, "Reference");
inline constexpr Field NoContrat = decl::Named(kFields, "NoContrat");
inline constexpr Field TypeEcran = decl::Named(kFields, "TypeEcran");
inline constexpr Field Duree = decl::Named(kFields, "Duree");
inline constexpr Field DureePrevue = decl::Named(kFields, "DureePrevue");
inline constexpr Field NoEcran = decl::Named(kFields, "NoEcran");
inline constexpr Field RangEcran = decl::Named(kFields, "RangEcran");
inline constexpr Field NbSpotsEcran = decl::Named(kFields, "NbSpotsEcran");
inline constexpr Field DatePrevue = decl::Named(kFields, "DatePrevue");
// Key 0: "yyyyMMddHHmmss".
inline constexpr Field Cle = Join(Date, Seconde, "Cle");

inline constexpr char kSeparateurReference = '|';

}  // namespace LogPub

// ---- FRAD026: advertising messages, as the tape machine lists them (one file per station) -----
// Keys: 0 = CleMessage (duplicates); 1 = CleSpot + NoSpot + Champ022; 2 = DateCreation +
// HeureCreation; 3 = TexteMessage, case-insensitive.
namespace MessagePub {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CleMessage", 8, 0),      // message key, as found in the broadcast log
    decl::Text("CleSpot", 8, 8),         // commercial the message belongs to
    decl::Text("NoSpot", 6, 16),         // spot number, digits
    decl::Text("Champ022", 5, 22),
    decl::Text("DateCreation", 8, 27),   // "yyyyMMdd"
    decl::Text("HeureCreation", 6, 35),  // "HHmmss"
    decl::Text("TexteMessage", 39, 41),  // message text shown in the advertising report
    decl::Text("DureeSecondes", 4, 80),  // length in seconds, digits
    decl::Text("Champ084", 66, 84),
});
// clang-format on

inline constexpr Layout kLayout{"MessagePub", 26, 150, 150, kFields};

inline constexpr Field CleMessage = decl::Named(kFields, "CleMessage");
inline constexpr Field CleSpot = decl::Named(kFields, "CleSpot");
inline constexpr Field NoSpot = decl::Named(kFields, "NoSpot");
inline constexpr Field DateCreation = decl::Named(kFields, "DateCreation");
inline constexpr Field HeureCreation = decl::Named(kFields, "HeureCreation");
inline constexpr Field TexteMessage = decl::Named(kFields, "TexteMessage");
inline constexpr Field DureeSecondes = decl::Named(kFields, "DureeSecondes");

}  // namespace MessagePub

// ---- FRAD005: contract headers (one file per station) -----------------------------------------
// Keys: 0 = TypeContrat + CodeClient + NoContrat; 1 = CodeClient + NoContrat; 2 = NoContrat;
// 3 = Libelle, case-insensitive.
namespace EnteteContrat {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("TypeContrat", 2, 0),
    decl::Text("CodeClient", 8, 2),      // client (key 0 of FRAD003)
    decl::Text("NoContrat", 6, 10),      // contract number
    decl::Text("CodeCommercial", 8, 16), // salesperson who sold the contract (key 0 of FRAD001)
    decl::Text("DateDebut", 8, 24),      // first day of the contract, "yyyyMMdd"
    decl::Text("Champ032", 7, 32),
    decl::Text("Libelle", 40, 39),       // contract title
    decl::Text("Champ079", 71, 79),
});
// clang-format on

inline constexpr Layout kLayout{"EnteteContrat", 5, 150, 150, kFields};

inline constexpr Field TypeContrat = decl::Named(kFields, "TypeContrat");
inline constexpr Field CodeClient = decl::Named(kFields, "CodeClient");
inline constexpr Field NoContrat = decl::Named(kFields, "NoContrat");
inline constexpr Field CodeCommercial = decl::Named(kFields, "CodeCommercial");
inline constexpr Field DateDebut = decl::Named(kFields, "DateDebut");
inline constexpr Field Libelle = decl::Named(kFields, "Libelle");

}  // namespace EnteteContrat

// ---- FRAD001: salespeople ---------------------------------------------------------------------
// Keys: 0 = CodeCommercial; 1 = first 10 characters of NomCommercial, case-insensitive.
namespace Commercial {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CodeCommercial", 8, 0),
    decl::Text("NomCommercial", 30, 8),
    decl::Text("Champ038", 30), decl::Text("Champ068", 30), decl::Text("Champ098", 5),
    decl::Text("Champ103", 30), decl::Text("Champ133", 50), decl::Block("Champ183", 30),
    decl::Text("Champ213", 87),
});
// clang-format on

inline constexpr Layout kLayout{"Commercial", 1, 300, 300, kFields};

inline constexpr Field CodeCommercial = decl::Named(kFields, "CodeCommercial");
inline constexpr Field NomCommercial = decl::Named(kFields, "NomCommercial");

}  // namespace Commercial

// ---- FRAD002: business sectors ----------------------------------------------------------------
// Keys: 0 = CodeSecteur; 1 = first 10 characters of Libelle, case-insensitive.
namespace SecteurActivite {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CodeSecteur", 10, 0),
    decl::Text("Libelle", 30, 10),
    decl::Text("Champ040", 60, 40),
});
// clang-format on

inline constexpr Layout kLayout{"SecteurActivite", 2, 100, 100, kFields};

inline constexpr Field CodeSecteur = decl::Named(kFields, "CodeSecteur");
inline constexpr Field Libelle = decl::Named(kFields, "Libelle");

}  // namespace SecteurActivite

// ---- FRAD003: clients -------------------------------------------------------------------------
// Keys: 0 = CodeClient; 1 = first 10 characters of NomClient, case-insensitive.
// The structure is 904 bytes long in a 900-byte record. Its fields end at 899: the integer moves
// to the even offset 738, leaving byte 737 unused, and bytes 899..903 close the structure, of
// which 899 is the last byte the file stores.
namespace Client {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("CodeClient", 8, 0),
    decl::Text("NomClient", 30, 8),
    decl::Text("Champ038", 30), decl::Text("Champ068", 30), decl::Text("Champ098", 5),
    decl::Text("Champ103", 30), decl::Text("Champ133", 30), decl::Text("Champ163", 30),
    decl::Text("Champ193", 30), decl::Text("Champ223", 30), decl::Text("Champ253", 5),
    decl::Text("Champ258", 30), decl::Text("Champ288", 30), decl::Text("Champ318", 15),
    decl::Text("Champ333", 15), decl::Text("Champ348", 30), decl::Text("Champ378", 30),
    decl::Text("Champ408", 5), decl::Text("Champ413", 5), decl::Text("Champ418", 11),
    decl::Text("Champ429", 2), decl::Text("Champ431", 10), decl::Text("Champ441", 8),
    decl::Text("Champ449", 6), decl::Text("Champ455", 8), decl::Text("Champ463", 1),
    decl::Text("Champ464", 2), decl::Text("Champ466", 8), decl::Text("Champ474", 50),
    decl::Text("Champ524", 2), decl::Block("Champ526", 150), decl::Block("Champ676", 60),
    decl::Text("Champ736", 1), decl::Int16("Champ738"), decl::Text("Champ740", 159),
});
// clang-format on

inline constexpr Layout kLayout{"Client", 3, 904, 900, kFields};

inline constexpr Field CodeClient = decl::Named(kFields, "CodeClient");
inline constexpr Field NomClient = decl::Named(kFields, "NomClient");

}  // namespace Client

// ---- FRAD006: spot headers (one file per station) ---------------------------------------------
// Key 0 = Champ000 + Champ006. The structure is 404 bytes long in a 400-byte record. Each integer
// that would start at an odd offset moves to the next even one (gaps at 93 and 331); the fields
// end at 394 and bytes 394..403 close the structure.
namespace EnteteSpot {

// clang-format off
inline constexpr auto kFields = decl::Place({
    decl::Text("Champ000", 6, 0),
    decl::Text("Champ006", 2, 6),
    decl::Text("Champ008", 40), decl::Text("Champ048", 10), decl::Text("Champ058", 30),
    decl::Int16("Champ088"), decl::Int16("Champ090"), decl::Text("Champ092", 1),
    decl::Int16("Champ094"),
    decl::Block("Champ096", 40), decl::Block("Champ136", 40), decl::Block("Champ176", 40),
    decl::Block("Champ216", 40), decl::Block("Champ256", 40),
    decl::Int16("Champ296"), decl::Block("Champ298", 10), decl::Int16("Champ308"),
    decl::Int16("Champ310"), decl::Text("Champ312", 2), decl::Text("Champ314", 10),
    decl::Int16("Champ324"), decl::Text("Champ326", 1), decl::Text("Champ327", 1),
    decl::Int16("Champ328"), decl::Text("Champ330", 1), decl::Int16("Champ332"),
    decl::Int16("Champ334"), decl::Text("Champ336", 20), decl::Text("Champ356", 1),
    decl::Text("Champ357", 2), decl::Text("Champ359", 1), decl::Int16("Champ360"),
    decl::Text("Champ362", 32),
});
// clang-format on

inline constexpr Layout kLayout{"EnteteSpot", 6, 404, 400, kFields};

inline constexpr Field Cle =
    Join(decl::Named(kFields, "Champ000"), decl::Named(kFields, "Champ006"), "Cle");

}  // namespace EnteteSpot

}  // namespace zl3::rec
