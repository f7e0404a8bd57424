// One-time codes of who is signed in.
import { useEffect, useState } from "preact/hooks";
import { type NewTotp, type Session, beginTotp, confirmTotp, currentSession, removeTotp } from "./api";
import { Dialog, Lines, Trouble, openDialog, sentence } from "./dialogs";
import { Door, Field, Form } from "./forms";
import { t } from "./texts";

/** @param onDone  is told of the session once somebody has read all that is shown. */
function TwoStep(props: { onDone: (session: Session) => void }) {
    const [session, setSession] = useState<Session>();
    const [made, setMade] = useState<NewTotp>();
    const [code, setCode] = useState("");
    const [trouble, setTrouble] = useState("");
    const attempt = async (work: () => Promise<void>) => {
        setTrouble("");
        try {
            await work();
        } catch (error) {
            setTrouble(sentence(error));
        }
    };
    useEffect(() => void attempt(async () => setSession(await currentSession())), []);
    if (!session) {
        return <Trouble text={trouble} />;
    }
    if (session.new_recovery_codes) {
        return (
            <>
                <p>{t("totp.recovery")}</p>
                <Lines label={t("totp.codes")} lines={session.new_recovery_codes} />
                <div class="buttons">
                    <button class="main" onClick={() => props.onDone(session)}>
                        {t("totp.kept")}
                    </button>
                </div>
            </>
        );
    }
    if (made) {
        return (
            <Form action={t("totp.confirm")} work={async () => setSession(await confirmTotp(code))}>
                <p>{t("totp.secret")}</p>
                <p class="secret">{made.secret}</p>
                <p>
                    <a href={made.uri}>{t("totp.link")}</a>
                </p>
                <Field id="totp-code" label={t("signin.code")} autocomplete="one-time-code" isFocused onInput={setCode} />
            </Form>
        );
    }
    return (
        <>
            <p>{session.totp ? t("totp.on", { count: session.recovery_codes }) : t("totp.off")}</p>
            <Trouble text={trouble} />
            <div class="buttons">
                {session.totp ? (
                    <button class="danger" onClick={() => void attempt(async () => setSession(await removeTotp()))}>
                        {t("totp.remove")}
                    </button>
                ) : (
                    <button class="main" onClick={() => void attempt(async () => setMade(await beginTotp()))}>
                        {t("totp.add")}
                    </button>
                )}
            </div>
        </>
    );
}

/** @param onDone  is told of the session once codes were set up or removed. */
export const openTwoStep = (onDone: (session: Session) => void) =>
    openDialog(close => (
        <Dialog title={t("totp")} onClose={close}>
            <TwoStep
                onDone={session => {
                    onDone(session);
                    close();
                }}
            />
        </Dialog>
    ));

/** In place of all else, where the server lets nobody in without one-time codes. */
export const TwoStepPage = (props: { onDone: (session: Session) => void }) => (
    <Door title={t("totp")}>
        <p>{t("totp.required")}</p>
        <TwoStep onDone={props.onDone} />
    </Door>
);

const kDeclined = "two-step";
/** The ids of who has said here that he does not want them now. */
const declined = () => (localStorage.getItem(kDeclined) ?? "").split(" ");

/** Offers one-time codes to who signs in without them, until he sets them up or says no. */
export function TwoStepOffer(props: { session: Session; onDone: (session: Session) => void }) {
    const { session } = props;
    const [isOpen, setOpen] = useState(!declined().includes(String(session.id)));
    if (session.totp || !isOpen) {
        return null;
    }
    return (
        <aside class="offer" aria-label={t("totp")}>
            <span>{t("totp.off")}</span>
            <button onClick={() => openTwoStep(props.onDone)}>{t("totp.offer")}</button>
            <button
                onClick={() => {
                    localStorage.setItem(kDeclined, [...declined(), session.id].join(" ").trim());
                    setOpen(false);
                }}
            >
                {t("totp.notnow")}
            </button>
        </aside>
    );
}
