// One-time codes of who is signed in.
import { useEffect, useState } from "preact/hooks";
import { type NewTotp, type Session, beginTotp, confirmTotp, currentSession, removeTotp } from "./api";
import { Dialog, Lines, Trouble, openDialog, sentence } from "./dialogs";
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
            <form
                onSubmit={event => {
                    event.preventDefault();
                    void attempt(async () => setSession(await confirmTotp(code)));
                }}
            >
                <p>{t("totp.secret")}</p>
                <p class="secret">{made.secret}</p>
                <p>
                    <a href={made.uri}>{t("totp.link")}</a>
                </p>
                <Trouble text={trouble} />
                <div class="field">
                    <label for="totp-code">{t("signin.code")}</label>
                    <input
                        id="totp-code"
                        required
                        autocomplete="one-time-code"
                        onInput={event => setCode(event.currentTarget.value)}
                    />
                </div>
                <div class="buttons">
                    <button class="main">{t("totp.confirm")}</button>
                </div>
            </form>
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

export const openTwoStep = () =>
    openDialog(close => (
        <Dialog title={t("totp")} onClose={close}>
            <TwoStep onDone={close} />
        </Dialog>
    ));

/** In place of all else, where the server lets nobody in without one-time codes. */
export const TwoStepPage = (props: { onDone: (session: Session) => void }) => (
    <main class="door">
        <h1>
            <img src="/icon.svg" alt="" width="28" height="28" /> {t("totp")}
        </h1>
        <p>{t("totp.required")}</p>
        <TwoStep onDone={props.onDone} />
    </main>
);
