// The message catalogue: constant data, in memory that nothing builds and nothing releases.
#include "qel_rcpt_int.h"
#include "qel_rcpt_tables.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <iterator>

namespace
{

struct lang_row {
    Qel_rcpt_msg_t key;
    const char *text[std::size(qel_rcpt::languages)]; // by language number
};

// By message number. Most translations go without accents, as receipt printers once wanted them.
// clang-format off
constexpr lang_row lang_table_static[] = {
    {QEL_RCPT_MSG_NONE, {}},
    {QEL_RCPT_MSG_UNKNOWN, {"Unknown", "Inconnu", "Desconocido", "Unbekannte", "Sconosciuto"}},
    {QEL_RCPT_MSG_TRECORD, {"Transaction Record", "Releve De Transaction", "Registro de la transaccion", "Transaktionen Aufzeichnung", "Record di transazione"}},
    {QEL_RCPT_MSG_ONLINERCPT, {"Online Receipt", "Recu en ligne", "Recibo en linea", "Online-Rechnung", "Scontrino online"}},
    {QEL_RCPT_MSG_TYPE, {"Type", "Type", "Tipo", "Art", "Genere"}},
    {QEL_RCPT_MSG_TRANTYPE, {"Transaction type", "Type de transaction", "Tipo de transacción", "Art der Transaktion", "Tipo di transazione"}},
    {QEL_RCPT_MSG_FLASH_DEFAULT, {"Flash Default", "Flash Defaut", "Flash Defecto", "Flash Standard", "Flash Predefinito"}},
    {QEL_RCPT_MSG_CHECKING_ENUS, {"Checking", "Cheque", "Cheques", "Girokonto", "Cheque"}},
    {QEL_RCPT_MSG_CHECKING_ENCA, {"Chequing", "Cheque", "Cheques", "Girokonto", "Cheque"}},
    {QEL_RCPT_MSG_SAVINGS, {"Savings", "Epargne", "Ahorros", "Sparkonto", "Risparmio"}},
    {QEL_RCPT_MSG_ISSUER_STANDIN, {"Issuer Standin", "Emetteur Vacataire", "Editor Suplente", "Emittent Ersatz", "Emittente Sostituto"}},
    {QEL_RCPT_MSG_ISSUER, {"Issuer", "Emetteur", "Editor", "Emittent", "Emittente"}},
    {QEL_RCPT_MSG_CARD, {"Card", "Carte", "Tarjeta", "Karte", "Carta"}},
    {QEL_RCPT_MSG_CARD_REMOVED, {"Card Removed", "Carte Retiree", "Tarjeta Eliminada", "Karte entfernt", "Carta Rimossa"}},
    {QEL_RCPT_MSG_DECLINE_BY_CARD, {"Declined By Card", "Refuse Par Carte", "Rechazado Por Tarjeta", "Abgelehnt Mit Karte", "Rifiutato Dalla Carta"}},
    {QEL_RCPT_MSG_CHIP_SWIPED, {"Chip Card Swiped", "Carte A Puce Glissee", "Deslizar La Tarjeta De Chip", "Chipkarten-Swipe", "Scorri la Carta Chip"}},
    {QEL_RCPT_MSG_CHIP_MALFUNCTION, {"Chip Malfunction", "Defaillance Carte A Puce", "Falla De Tarjeta Chip", "Fehler Chipkarte", "Scheda Chip Guasto"}},
    {QEL_RCPT_MSG_VERIED_PIN, {"Verified By Pin", " Verifiee par NIP", "Verificado por pin", "Bestatigt von Pin", "Verificato da pin"}},
    {QEL_RCPT_MSG_PIN_BYPASSED, {"Pin Bypassed", "NIP Contourne", "Vvitar PIN", "Umgehen por pin", "Eludere da pin"}},
    {QEL_RCPT_MSG_PARTIAL_APPROVAL, {"Transaction Partially Approved", "Transaction Partiellement Approuve", "Transaccion Parcialmente Aprobado", "Transaktion Teilweise Genehmigt", "Transazione Parzialmente Approvato"}},
    {QEL_RCPT_MSG_APPROVED, {"Approved", "Approuve", "Aprobado", "Genehmigt", "Approvato"}},
    {QEL_RCPT_MSG_APPROVED_TY, {"Approved - Thank You", "Approuve - Merci", "Aprobado - Gracias", "Danke", "Grazie"}},
    {QEL_RCPT_MSG_CANCELED, {"Transaction Canceled", "Transaction Annule", "Transaccion Cancelado", "Transaktion Abgebrochen", "Transazione Annullato"}},
    {QEL_RCPT_MSG_DECLINE_CALL, {"Declined - Call Issuer", "Diminue - Emetteur D'Appel", "Rechazado - Emisor de Llamadas", "Abgelehnt - Call-Aussteller", "Diminuito - Chiamare L'Emittente"}},
    {QEL_RCPT_MSG_NOT_APPROVED, {"Transaction Not Approved", "Transaction non Approuve", "Transaccion no Aprovado", "Transaktion nicht bestatigt", "Transazione non approvato"}},
    {QEL_RCPT_MSG_NOT_COMPLETE, {"Transaction Not Completed", "Operation non Completee", "Transaccion sin Completar", "Transaktion nicht vollstandig", "Transazione non completato"}},
    {QEL_RCPT_MSG_DECLINED, {"Declined", "Diminue", "Rechazado", "Abgelehnt", "Diminuito"}},
    {QEL_RCPT_MSG_SIGNATURE, {"Signature", "Signature", "Firma", "Unterschrift", "Firma"}},
    {QEL_RCPT_MSG_AGREEMENT, {"Cardholder Will Pay Card Issuer Above Amount Pursuant To Cardholder Agreement", "Le Titulaire Versera Ce Montant A L'Emetteur Conformement Au Contrat Adherent", "El titular de la tarjeta pagara al emisor de la tarjeta por encima de la cantidad en virtud del acuerdo del titular de la tarjeta", "Der Karteninhaber wird den Kartenherausgeber gemass der Karteninhabervereinbarung uber dem Betrag belasten", "Il titolare della carta emettera l'emittente della carta di pagamento in eccesso in base all'accordo del titolare della carta"}},
    {QEL_RCPT_MSG_PAYMENT, {"Payment", "Paiement", "Pago", "Zahlung", "Pagamento"}},
    {QEL_RCPT_MSG_ORDER, {"Order", "Commande", "Orden", "Bestell", "Ordine"}},
    {QEL_RCPT_MSG_PAID, {"Paid", "Paye", "Pagada", "Bezahlt", "Pagata"}},
    {QEL_RCPT_MSG_SIG_ELECTRONIC, {"Signature Captured Electronically", "Signature capturee electroniquement", "Firma capturada electronicamente", "Unterschrift elektronisch erfasst", "Firma catturata elettronicamente"}},
    {QEL_RCPT_MSG_NOTICE, {"Important - Retain This Copy For Your Records", "Important - conserver cette copie pour vos dossiers", "Importante - conserve esta copia para sus registros", "Wichtig - Bewahren Sie diese Kopie fur Ihre Unterlagen auf", "Importante - conserva questa copia per i tuoi record"}},
    {QEL_RCPT_MSG_DUPLICATE, {"Duplicate", "Dupliquer", "Duplicar", "Duplikat", "Duplicare"}},
    {QEL_RCPT_MSG_CUST_COPY, {"Customer Copy", "Copie Du Client", "Copia del cliente", "Kundenkopie", "Copia per il cliente"}},
    {QEL_RCPT_MSG_MERCH_COPY, {"Merchant Copy", "Copie Du Detaillant", "Copia del Comerciante", "Handlerkopie", "Copia del commerciante"}},
    {QEL_RCPT_MSG_UNKNOWN_NAME, {"Unknown Merchant Name", "Nom du Detaillant Inconnu", "Nombre comercial desconocido", "Unbekannter Handlername", "Nome del commerciante sconosciuto"}},
    {QEL_RCPT_MSG_UNKNOWN_ADDR, {"Unknown Address", "Adresse inconnue", "Direccion desconocida", "Unbekannte Adresse", "Indirizzo sconosciuto"}},
    {QEL_RCPT_MSG_UNKNOWN_PHONE, {"Unknown Phone Number", "Numero de telephone inconnu", "Numero de telefono desconocido", "Unbekannte Telefonnummer", "Numero di telefono sconosciuto"}},
    {QEL_RCPT_MSG_UNKNOWN_PHONE_S, {"Unknown Phone", "Telephone inconnu", "Telefono Desconocido", "Unbekannte Telefon", "telefono sconosciuto"}},
    {QEL_RCPT_MSG_UNKNOWN_URL, {"Unknown URL", "URL inconnu", "URL Desconocido", "Unbekannte URL", "URL sconosciuto"}},
    {QEL_RCPT_MSG_MID, {"MID", "MID", "MID", "MID", "MID"}},
    {QEL_RCPT_MSG_LANE, {"Lane", "Voie", "Carril", "Kasse", "Corsia"}},
    {QEL_RCPT_MSG_ACCOUNT_TYPE, {"Account Type", "Type de compte", "Tipo de cuenta", "Konto Typ", "Tipo di account"}},
    {QEL_RCPT_MSG_ACCOUNT, {"Account", "Compte", "Cuenta", "Konto", "Account"}},
    {QEL_RCPT_MSG_CUSTOMER, {"Customer", "Client", "Cliente", "Kunde", "Cliente"}},
    {QEL_RCPT_MSG_TIME, {"Time", "Heure", "Hora", "Zeit", "Tempo"}},
    {QEL_RCPT_MSG_ORDER_NUM, {"Order Number", "Numero de Commande", "Numero de orden", "Bestellnummer", "Numero d'ordine"}},
    {QEL_RCPT_MSG_ORDER_NUM_S, {"Order #", "Commande #", "Orden #", "Bestell #", "Ordine #"}},
    {QEL_RCPT_MSG_INVOICE_NUM, {"Invoice #", "No. De Facture", "Numero De Factura", "Rechnungsnummer", "Numero Di Fattura"}},
    {QEL_RCPT_MSG_PO_NUM, {"PO Number", "Numero de PO", "Numero de PO", "PO Nummer", "Numero PO"}},
    {QEL_RCPT_MSG_PO_NUM_S, {"PO #", "PO #", "PO #", "PO #", "PO #"}},
    {QEL_RCPT_MSG_TTID, {"TTID", "TTID", "TTID", "TTID", "TTID"}},
    {QEL_RCPT_MSG_RESPONSE_CODE, {"Response Code", "Code de reponse", "Codigo de Respuesta", "Antwortcode", "Codice di Risposta"}},
    {QEL_RCPT_MSG_RESPONSE_CODE_S, {"RespCode", "Reponse", "Respuesta", "Antwortcode", "Risposta"}},
    {QEL_RCPT_MSG_AUTH_NUM, {"Auth", "Autori", "Autori", "Genehmig", "Autori"}},
    {QEL_RCPT_MSG_APPROVAL_CODE, {"Approval code", "Code de confirmation", "Codigo de aprovacion", "Genehmigungscode", "Codice di approvazione"}},
    {QEL_RCPT_MSG_BATCH, {"Batch", "Lot", "Lote", "Stapel", "Partita"}},
    {QEL_RCPT_MSG_STAN, {"Stan", "Stan", "Stan", "Stan", "Stan"}},
    {QEL_RCPT_MSG_AMOUNT, {"Amount", "Montant", "Cantidad", "Menge", "Quantita"}},
    {QEL_RCPT_MSG_TIP, {"Tip", "Pointe", "Propina", "Spitze", "Mancia"}},
    {QEL_RCPT_MSG_DISCOUNT, {"Discount", "Remise", "Descuento", "Rabatt", "Sconto"}},
    {QEL_RCPT_MSG_CASHDISCOUNT, {"Cash Discount", "Escompte de Caisse", "Descuento de Efectivo", "Barzahlung Skonto", "Sconto di Cassa"}},
    {QEL_RCPT_MSG_TAX, {"Tax", "Impot", "Impuesto", "MwSt", "Imposta"}},
    {QEL_RCPT_MSG_CASHBACK, {"Cash back", "Remise en Argent", "Devolucion de Dinero", "Geld zuruck", "Contanti Rimborso"}},
    {QEL_RCPT_MSG_CASHBACK_S, {"Cashback", "Remise en Argent", "Efectivo", "Geld zuruck", "Contanti Rimborso"}},
    {QEL_RCPT_MSG_AMOUNT_DUE, {"Amount Due", "Montant Du", "Cantidad Debida", "Offener Betrag", "Importo Dovuto"}},
    {QEL_RCPT_MSG_SUBTOTAL, {"Subtotal", "Sous-Total", "Total Parcial", "Zwischensumme", "Totale Parziale"}},
    {QEL_RCPT_MSG_TOTAL, {"Total", "Total", "Total", "Gesamt", "Totale"}},
    {QEL_RCPT_MSG_PARTIAL_AMOUNT, {"Partially Approved", "Autorisation Partiel", "Parcialmente aprobado", "Teilweise genehmigt", "Parzialmente Approvato"}},
    {QEL_RCPT_MSG_AUTH_AMOUNT, {"Authorized Amount", "Montant Autorise", "Cantidad Autorizada", "Autorisierter Betrag", "Importo Autorizzato"}},
    {QEL_RCPT_MSG_AUTH_AMOUNT_S, {"Auth Amount", "Montant Autori", "Cantidad Autori", "Autoris Betrag", "Importo Autori"}},
    {QEL_RCPT_MSG_SURCHARGE, {"Surcharge", "Frais", "Recargo", "Zuschlag", "Sovraccarico"}},
    {QEL_RCPT_MSG_FEE, {"Fee", "Frais", "Recargo", "Zuschlag", "Sovraccarico"}},
    {QEL_RCPT_MSG_CONVENIENCEFEE, {"Convenience Fee", "Frais de Commodite", "Costes de Gestion", "Komfortgebuhr", "Tariffa di Convenienza"}},
    {QEL_RCPT_MSG_SUPPLEMENTALFEE, {"Supplemental Fee", "Frais Supplementaires", "Tarifa Suplementaria", "Zusatzliche Gebuhr", "Tariffa Supplementare"}},
    {QEL_RCPT_MSG_BALANCE, {"Balance", "Solde Disponible", "Saldo", "Kontostand", "Saldo"}},
    {QEL_RCPT_MSG_MODE, {"Mode", "Mode", "Modo", "Modus", "Modalita"}},
    {QEL_RCPT_MSG_NAME, {"Name", "Prenom", "Nombre", "Name", "Nome"}},
    {QEL_RCPT_MSG_AID, {"AID", "AID", "AID", "AID", "AID"}},
    {QEL_RCPT_MSG_TVR, {"TVR", "TVR", "TVR", "TVR", "TVR"}},
    {QEL_RCPT_MSG_TSI, {"TSI", "TSI", "TSI", "TSI", "TSI"}},
    {QEL_RCPT_MSG_IAD, {"IAD", "IAD", "IAD", "IAD", "IAD"}},
    {QEL_RCPT_MSG_ODD, {"Offline Decline Data", "Donnees de Refus", "Desconectado Rechazado Datos", "Offline Daten Ablehnen", "Dati Declino Offline"}},
    {QEL_RCPT_MSG_AC_TYPE, {"AC Type", "AC Type", "AC Tipo", "AC Art", "AC Genere"}},
    {QEL_RCPT_MSG_AC, {"AC", "AC", "AC", "AC", "AC"}},
    {QEL_RCPT_MSG_PURCHASE, {"Purchase", "Achat", "Compra", "Kauf", "Acquista"}},
    {QEL_RCPT_MSG_PURCHASE_DEBIT, {"Debit Card Sale", "Vente cartes de debit", "Venta tarjeta de debito", "Debitkartenverkauf", "Vendita carte di debito"}},
    {QEL_RCPT_MSG_PURCHASE_CREDIT, {"Credit Card Sale", "Vente cartes de credit", "Venta tarjeta de credito", "Kreditkartenverkauf", "Vendita carte di credito"}},
    {QEL_RCPT_MSG_AUTHORIZATION, {"Authorization", "Autorisation", "Autorizacion", "Genehmigung", "Autorizzazione"}},
    {QEL_RCPT_MSG_ACTIVATE, {"Activate", "Activer", "Activar", "Aktivieren", "Attivare"}},
    {QEL_RCPT_MSG_REFUND, {"Refund", "Remise D'Achat", "Reembolso", "Ruckerstattung", "Rimborso"}},
    {QEL_RCPT_MSG_RELOAD, {"Reload", "Recharger", "Recargar", "Neu Laden", "Ricaricare"}},
    {QEL_RCPT_MSG_VOIDED, {"Voided", "Annule", "Anulada", "Annullieren", "Annullate"}},
    {QEL_RCPT_MSG_VOID, {"Void", "Vide", "Vacio", "Leere", "Vuoto"}},
    {QEL_RCPT_MSG_ADMIN, {"Administrative", "Administratif", "Administrativo", "Administrativ", "Amministrativo"}},
    {QEL_RCPT_MSG_BALANCE_INQ, {"Balance Inquiry", "Enquete d'equilibre", "Consulta de Saldo", "Bilanzanfrage", "Richiesta di Equilibrio"}},
    {QEL_RCPT_MSG_AVSONLY, {"Verification", "Verification", "Verificacion", "Uberprufung", "Verifica"}},
    {QEL_RCPT_MSG_CASHOUT, {"Cash Out", "Retirer", "Cobrar", "Auszahlen", "Incassare"}},
    {QEL_RCPT_MSG_CASH_PRICE, {"Cash Price", "Prix au Comptant", "Precio al Contado", "Barpreis", "Prezzo in Contanti"}},
    {QEL_RCPT_MSG_NONCASH_PRICE, {"Non Cash Price", "Prix non Comptant", "Precio no Contado", "Bargeldloser Preis", "Prezzo non in Contanti"}},
};
// clang-format on

constexpr bool is_in_order()
{
    std::size_t number = 0;
    return std::ranges::all_of(lang_table_static,
                               [&](const lang_row &row) { return row.key == number++; });
}
static_assert(is_in_order(), "a row of lang_table_static does not stand at its message's number");

constexpr bool is_translated()
{
    return std::ranges::none_of(lang_table_static, [](const lang_row &row) {
        return row.key != QEL_RCPT_MSG_NONE &&
               std::ranges::find(row.text, nullptr) != std::end(row.text);
    });
}
static_assert(is_translated(), "a message of lang_table_static lacks a language");

} // namespace

void Qel_rcpt_lang_init() noexcept {}

void Qel_rcpt_lang_deinit() noexcept {}

const char *Qel_rcpt_msg_to_string(Qel_rcpt_lang_t lang, Qel_rcpt_msg_t msg) noexcept
{
    if (msg >= std::size(lang_table_static))
        return nullptr;
    const auto &text = lang_table_static[msg].text;
    return text[lang < std::size(text) ? lang : QEL_RCPT_LANG_EN];
}

char *Qel_rcpt_msg_to_string_colon(Qel_rcpt_lang_t lang, Qel_rcpt_msg_t msg) noexcept
{
    const char *text = Qel_rcpt_msg_to_string(lang, msg);
    if (Qel_str_isempty(text))
        return Qel_strdup("");
    qel::buf out(Qel_buf_create());
    Qel_buf_add_str(out.get(), text);
    Qel_buf_add_byte(out.get(), ':');
    return qel::finish(std::move(out)).release();
}
