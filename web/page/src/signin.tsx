// Who somebody is.
import { useState } from "preact/hooks";
import { Problem, type Session, setUp, signIn, stepUp } from "./api";
import { Dialog, Trouble, sentence } from "./dialogs";
import { go } from "./place";
import { t } from "./texts";

function Password(props: { label: string; name: string; isNew?: boolean; onInput: (text: string) => void }) {
    return (
        <div class="field">
            <label for={props.name}>{props.label}</label>
            <input
                id={props.name}
                type="password"
                required
                autocomplete={props.isNew ? "new-password" : "current-password"}
                onInput={event => props.onInput(event.currentTarget.value)}
            />
        </div>
    );
}

export function SignInForm(props: { login?: string; isFixed?: boolean; onDone: (session: Session) => void; isStepUp?: boolean }) {
    const [login, setLogin] = useState(props.login ?? "");
    const [password, setPassword] = useState("");
    const [code, setCode] = useState("");
    const [isCodeAsked, setCodeAsked] = useState(false);
    const [trouble, setTrouble] = useState("");
    const [isBusy, setBusy] = useState(false);
    return (
        <form
            onSubmit={async event => {
                event.preventDefault();
                setBusy(true);
                setTrouble("");
                try {
                    props.onDone(props.isStepUp ? await stepUp(password, code) : await signIn(login, password, code));
                } catch (error) {
                    const isNext = error instanceof Problem && error.code === "code_required" && !isCodeAsked;
                    setCodeAsked(isCodeAsked || isNext);
                    setTrouble(isNext ? "" : sentence(error));
                }
                setBusy(false);
            }}
        >
            <Trouble text={trouble} />
            <div class="field">
                <label for="login">{t("signin.login")}</label>
                <input
                    id="login"
                    dir="auto"
                    required
                    readOnly={props.isFixed}
                    autocomplete="username"
                    value={login}
                    onInput={event => setLogin(event.currentTarget.value)}
                />
            </div>
            <Password label={t("signin.password")} name="password" onInput={setPassword} />
            {isCodeAsked && (
                <div class="field">
                    <label for="code">{t("signin.code")}</label>
                    <input
                        id="code"
                        required
                        autocomplete="one-time-code"
                        aria-describedby="code-help"
                        ref={field => {
                            if (code === "") {
                                field?.focus();
                            }
                        }}
                        onInput={event => setCode(event.currentTarget.value)}
                    />
                    <p class="help" id="code-help">
                        {t("signin.codehelp")}
                    </p>
                </div>
            )}
            <div class="buttons">
                <button class="main" disabled={isBusy}>
                    {t("signin")}
                </button>
            </div>
        </form>
    );
}

export function SignInPage(props: { login: string; notice: string; onDone: (session: Session) => void }) {
    return (
        <main class="door">
            <h1>
                <img src="/icon.svg" alt="" width="28" height="28" /> {t("signin.title")}
            </h1>
            {props.notice && <p role="status">{props.notice}</p>}
            <SignInForm login={props.login} onDone={props.onDone} />
        </main>
    );
}

/** Over the page: what was entered stays. */
export function SignInDialog(props: {
    why: "session" | "step-up";
    login: string;
    onDone: (session: Session) => void;
    onClose: () => void;
}) {
    return (
        <Dialog title={t("signin")} onClose={props.onClose}>
            <p>{t(props.why === "session" ? "signin.again" : "signin.stepup")}</p>
            <SignInForm login={props.login} isFixed isStepUp={props.why === "step-up"} onDone={props.onDone} />
        </Dialog>
    );
}

export function SetupPage(props: { onDone: (login: string) => void }) {
    const [first, setFirst] = useState("");
    const [second, setSecond] = useState("");
    const [trouble, setTrouble] = useState("");
    return (
        <main class="door">
            <h1>
                <img src="/icon.svg" alt="" width="28" height="28" /> {t("setup.title")}
            </h1>
            <p>{t("setup.text")}</p>
            <form
                onSubmit={async event => {
                    event.preventDefault();
                    if (first !== second) {
                        setTrouble(t("setup.differ"));
                        return;
                    }
                    try {
                        const done = await setUp(location.hash.slice(1), first);
                        await go("/", {}, "replace");
                        props.onDone(done.login);
                    } catch (error) {
                        setTrouble(sentence(error));
                    }
                }}
            >
                <Trouble text={trouble} />
                <Password label={t("signin.password")} name="first" isNew onInput={setFirst} />
                <Password label={t("setup.repeat")} name="second" isNew onInput={setSecond} />
                <div class="buttons">
                    <button class="main">{t("setup.go")}</button>
                </div>
            </form>
        </main>
    );
}
