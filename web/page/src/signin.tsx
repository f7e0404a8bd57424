// Who somebody is.
import { useState } from "preact/hooks";
import { Problem, type Session, setUp, signIn, stepUp } from "./api";
import { Dialog } from "./dialogs";
import { Door, Field, Form } from "./forms";
import { go } from "./place";
import { t } from "./texts";

export function SignInForm(props: { login?: string; isFixed?: boolean; onDone: (session: Session) => void; isStepUp?: boolean }) {
    const [login, setLogin] = useState(props.login ?? "");
    const [password, setPassword] = useState("");
    const [code, setCode] = useState("");
    const [isCodeAsked, setCodeAsked] = useState(false);
    return (
        <Form
            action={t("signin")}
            work={async () => props.onDone(props.isStepUp ? await stepUp(password, code) : await signIn(login, password, code))}
            onTrouble={error => {
                const isNext = error instanceof Problem && error.code === "code_required" && !isCodeAsked;
                setCodeAsked(isCodeAsked || isNext);
                return !isNext;
            }}
        >
            <Field
                id="login"
                label={t("signin.login")}
                autocomplete="username"
                readOnly={props.isFixed}
                isFocused={!props.login}
                value={login}
                onInput={setLogin}
            />
            <Field
                id="password"
                label={t("signin.password")}
                type="password"
                autocomplete="current-password"
                isFocused={!!props.login}
                onInput={setPassword}
            />
            {isCodeAsked && (
                <Field
                    id="code"
                    label={t("signin.code")}
                    autocomplete="one-time-code"
                    isFocused
                    help={t("signin.codehelp")}
                    onInput={setCode}
                />
            )}
        </Form>
    );
}

export const SignInPage = (props: { login: string; notice: string; onDone: (session: Session) => void }) => (
    <Door title={t("signin.title")}>
        {props.notice && <p role="status">{props.notice}</p>}
        <SignInForm login={props.login} onDone={props.onDone} />
    </Door>
);

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
    return (
        <Door title={t("setup.title")}>
            <p>{t("setup.text")}</p>
            <Form
                action={t("setup.go")}
                work={async () => {
                    if (first !== second) {
                        throw new Problem(0, "", t("setup.differ"));
                    }
                    const done = await setUp(location.hash.slice(1), first);
                    await go("/", {}, "replace");
                    props.onDone(done.login);
                }}
            >
                <Field
                    id="first"
                    label={t("signin.password")}
                    type="password"
                    autocomplete="new-password"
                    help={t("password.rules")}
                    onInput={setFirst}
                />
                <Field id="second" label={t("setup.repeat")} type="password" autocomplete="new-password" onInput={setSecond} />
            </Form>
        </Door>
    );
}
